#ifndef WINDOW_MODEL_SESSION_H
#define WINDOW_MODEL_SESSION_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include "casetable/importing/Sorting.h"
#include "window/model/BackgroundJobs.h"
#include "window/model/Files.h"
#include "window/model/Grid.h"
#include "window/model/Latest.h"
#include "window/model/Matching.h"
#include "window/model/Naming.h"
#include "window/model/Saving.h"
#include "window/model/Setup.h"
#include "window/model/Suggestions.h"
#include "window/model/View.h"
#include "window/model/Walk.h"

namespace casetable {

/// Why the reading as it stands cannot be used.
struct ReadingProblem {
    std::size_t line;     ///< The index of the template among Setup::templates.
    std::size_t position; ///< The byte of it at which it cannot be read on.
    std::string reason;   ///< Half a sentence.
};

/// The index of a column among `names`, behind which it is put where it is not one of them. So one
/// name has one index.
std::size_t columnIndex(std::vector<std::string>& names, const std::string& name);

/// What the window shows: the setup, and what it comes to. Files are listed and matched on threads
/// of its own, so no operation here waits for them.
///
/// While a reading is being typed that cannot be used, the one before stays in effect: with its
/// table, and with its command.
class Session : public QObject {
    Q_OBJECT

public:
    /// Matches files on as many as `jobs` threads. Throws Failure with ExitCode::ImportFailed where
    /// the system has no threads.
    explicit Session(std::size_t jobs);
    ~Session() override;

    const Setup& setup() const { return setup_; }

    /// Takes a setup in place of the present one. Where the reading is another, that can be undone.
    void open(const Setup& setup);

    /// Takes a changed setup. All but the source of it can be undone: with the change before if
    /// both have the same `step`, which is not empty, and come soon after each other.
    void change(const Setup& setup, const QString& step = {});

    bool canUndo() const { return !undone_.past.empty(); }
    bool canRedo() const { return !undone_.future.empty(); }
    void undo();
    void redo();

    /// Lists the files of the source anew.
    void walkAgain();
    /// Ends the walk with the files found so far; one that the system keeps waiting is left to
    /// itself soon.
    void stopWalk();
    bool isWalking() const { return walk_ && !hasWalked_; }
    Walk::Progress progress() const { return walk_ ? walk_->progress() : Walk::Progress(); }
    /// How the walk ended; nothing is in it before.
    const Walk::End& walkEnd() const { return walkEnd_; }

    /// The files so far.
    const Files& files() const { return files_; }

    const std::optional<ReadingProblem>& problem() const { return problem_; }

    /// The reading in effect; null for none.
    const std::shared_ptr<const Reading>& reading() const { return reading_; }

    /// The columns of values that are shown, each by its name. A column has the colour of its index
    /// here; others that are shown beside them count on behind, in columnIndex().
    std::vector<std::string> columnNames() const;

    /// What the files came to last; null for nothing yet. While isMatching(), of an older reading.
    const std::shared_ptr<const Matching>& matching() const { return matching_; }
    bool isMatching() const { return isMatching_; }

    /// The cases in the order of Setup::sort; null where they stand in their own.
    const CaseOrder* caseOrder() const { return caseOrder_ ? &*caseOrder_ : nullptr; }
    const std::vector<SortKey>& sortKeys() const { return sortKeys_; }

    /// Shows the files that the filter says.
    void filter(const PathFilter& filter);
    const PathFilter& filter() const { return filter_; }

    /// The files that are shown; null for all.
    const std::vector<std::uint32_t>* shownFiles() const;

    /// The setup that is in effect, of which casetable makes the table that is shown.
    const Setup& effective() const { return effective_; }

    /// The column of `key`, an index among those of caseReport(), as --sort takes it.
    std::string sortValue(const SortKey& key) const;

    /// Gives bytes of a path a name, as nameBytes() does with the templates of the setup; the
    /// result comes by named(). A newer one takes the place of it.
    void name(const NamedBytes& bytes);

    /// Looks for templates; they come by suggested().
    void suggest();

    /// Makes the grid of two columns, different indices of Reading::patterns() of the matching; it
    /// comes by gridMade(). A newer one takes the place of it.
    void makeGrid(std::size_t rowColumn, std::size_t columnColumn);

    /// Writes rows of what is shown to `file`, as saveTable() does; saved() tells the end. Refused
    /// by failed() where there are none, or those of a walk that failed: casetable makes none.
    void save(const std::string& file, const SavedRows& rows = {});

    /// Has `act` write `file`, on a thread of its own; saved() tells the end, with `sentence` where
    /// it did not throw. Refused by failed() while another file is being written.
    void write(const std::string& file, const QString& sentence, std::function<void()> act);

    /// The files that are being written.
    const std::vector<std::string>& saving() const { return saving_; }

    /// Runs what else the system may keep waiting.
    BackgroundJobs& background() { return background_; }

    /// Whether all that was begun has come to its end.
    bool isIdle() const;

Q_SIGNALS:
    /// The setup, its problem, or what can be undone.
    void setupChanged();
    /// Other files, or more than before.
    void filesChanged();
    /// How far the walk is, at most ten times a second, and that it has ended.
    void progressed();
    /// The matching, the order of cases, or whether they are being made.
    void matchingChanged();
    /// Which files are shown.
    void shownChanged();
    /// What a name came to: the templates, or else a sentence that says why not.
    void named(const NamedTemplates& result, const QString& error);
    void gridMade(const Grid& grid);
    void suggested(const std::vector<Suggestion>& suggestions);
    /// That a file was written, in a sentence, or else one that says why not.
    void saved(const QString& sentence, const QString& error);
    /// A sentence about something that failed.
    void failed(const QString& sentence);

private:
    struct History {
        std::vector<Setup> past;
        std::vector<Setup> future;
    };

    void keepForUndo();
    void runGuarded(Latest& thread, bool& isBusy, const std::size_t& latest, Latest::Job job);
    void ask(std::function<std::function<void()>(const std::atomic<bool>& isCancelled)> find);
    void take(const Setup& setup);
    bool takeReading();
    void takeSort();
    void startWalk();
    void lookAtWalk();
    void startMatching();
    void startOrdering();
    void startFiltering();
    void dropShown();
    std::vector<Setup::AuxRow> goodRows() const;

    const std::size_t jobs_;
    Setup setup_;
    Setup effective_;
    History undone_;
    QString lastStep_;
    QElapsedTimer sinceStep_;
    std::optional<ReadingProblem> problem_;
    std::shared_ptr<const Reading> reading_;
    std::vector<SortKey> sortKeys_;

    std::unique_ptr<Walk> walk_;
    bool hasWalked_ = false;
    Walk::End walkEnd_;
    Files files_;
    QTimer timer_;
    QElapsedTimer sinceProgress_;
    QElapsedTimer sinceStop_; // Invalid while nobody has stopped the walk, and once it was left.

    std::shared_ptr<const Matching> matching_;
    bool isMatching_ = false;
    std::size_t matchings_ = 0; // Counts those that were begun.
    std::optional<CaseOrder> caseOrder_;
    std::size_t orders_ = 0;
    bool isOrdering_ = false;

    PathFilter filter_;
    std::optional<std::vector<std::uint32_t>> shown_; // By the last filter that was worked off.
    std::size_t filters_ = 0;
    bool isFiltering_ = false;

    std::size_t questions_ = 0;
    bool isAsking_ = false;
    std::vector<std::string> saving_;
    BackgroundJobs background_;
    std::size_t grids_ = 0;
    bool isMakingGrid_ = false;

    // Joined before what their jobs answer to is gone.
    std::unique_ptr<Latest> matcher_;
    std::unique_ptr<Latest> orderer_;
    std::unique_ptr<Latest> filterer_;
    std::unique_ptr<Latest> answerer_;
    std::unique_ptr<Latest> gridMaker_;
};

} // namespace casetable

#endif
