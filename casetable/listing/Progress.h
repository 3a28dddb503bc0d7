#ifndef CASETABLE_LISTING_PROGRESS_H
#define CASETABLE_LISTING_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <mutex>
#include <string>

#include <QObject>
#include <QString>

namespace casetable {

/// How far the reading of a list called `name` has come, in one line: the number of its paths; of a
/// list of `bytes` bytes also the share of them that has been read; and from its second second on
/// the time that the rest will take if it goes on as it has on the whole, rounded up.
///
/// `bytes` is 0 where nobody knows. A list that has grown beyond them is taken as one of those.
std::string listProgress(const std::string& name, std::size_t paths, std::size_t bytesRead,
                         std::size_t bytes, std::chrono::duration<double> elapsed);

/// How far a walk has come. The walk's thread calls the slot, and any thread may ask for the text.
class Progress : public QObject {
    Q_OBJECT

public:
    /// One line: the number of folders entered, `files`, which are counted elsewhere, and the path
    /// of the folder last entered.
    std::string text(std::size_t files) const;

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
