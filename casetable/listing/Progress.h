#ifndef CASETABLE_LISTING_PROGRESS_H
#define CASETABLE_LISTING_PROGRESS_H

#include <cstddef>
#include <mutex>
#include <string>

#include <QObject>
#include <QString>

namespace casetable {

/// Where a walk has come to. The walk's thread calls the slot, any other thread may ask.
class Progress : public QObject {
    Q_OBJECT

public:
    /// One line: folders and files seen, and the folder last entered.
    std::string text(std::size_t filesSeen) const;

public Q_SLOTS:
    /// Counts a folder. Connect it directly: it only takes a note.
    void enterFolder(QString folder);

private:
    mutable std::mutex mutex_;
    std::size_t folders_ = 0;
    QString current_;
};

} // namespace casetable

#endif
