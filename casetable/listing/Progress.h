#ifndef CASETABLE_LISTING_PROGRESS_H
#define CASETABLE_LISTING_PROGRESS_H

#include <cstddef>
#include <mutex>
#include <string>

#include <QObject>
#include <QString>

namespace casetable {

/// How far a walk has come. The walk's thread calls the slot, and any thread may ask for the text.
class Progress : public QObject {
    Q_OBJECT

public:
    /// One line: the number of folders entered, `filesSeen`, which is counted elsewhere, and the
    /// path of the folder last entered.
    std::string text(std::size_t filesSeen) const;

public Q_SLOTS:
    /// Counts `folder`, a path. Connect it directly, as it returns at once and the object's own
    /// thread may run no event loop.
    void enterFolder(QString folder);

private:
    mutable std::mutex mutex_;
    std::size_t folders_ = 0;
    QString current_;
};

} // namespace casetable

#endif
