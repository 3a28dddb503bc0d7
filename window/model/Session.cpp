#include "window/model/Session.h"

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

#include <QRunnable>
#include <QThreadPool>

#include "casetable/importing/PlainTagValidator.h"
#include "casetable/listing/ReadList.h"
#include "casetable/options/ColumnNames.h"
#include "casetable/system/ExitCode.h"
#include "window/model/Text.h"

namespace casetable {

namespace {

// How often it is looked whether a walk has ended, and how often its progress is told.
const int lookMilliseconds = 15;
const int progressMilliseconds = 100;

// So long a walk that was stopped may take to end.
const int leaveMilliseconds = 300;

// Keys that follow each other so soon are one change.
const int stepMilliseconds = 1500;

const std::size_t mostUndone = 1000;

bool isBlank(const std::string& text)
{
    return text.find_first_not_of(" \t") == std::string::npos;
}

void takeReadingOf(Setup& setup, const Setup& other)
{
    setup.by = other.by;
    setup.templates = other.templates;
    setup.markers = other.markers;
}

bool haveSameRows(const std::vector<Setup::AuxRow>& left, const std::vector<Setup::AuxRow>& right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const Setup::AuxRow& l, const Setup::AuxRow& r) {
                          return l.wildcard == r.wildcard && l.tag == r.tag;
                      });
}

bool haveSameReading(const Setup& left, const Setup& right)
{
    Setup other = left;
    takeReadingOf(other, right);
    return other == left;
}

// The templates that count, and the index of each among all.
struct CountingTemplates {
    std::vector<std::string> texts;
    std::vector<std::size_t> lines;

    explicit CountingTemplates(const std::vector<std::string>& all)
    {
        for (std::size_t i = 0; i < all.size(); ++i) {
            if (isBlank(all[i]))
                continue;
            texts.push_back(all[i]);
            lines.push_back(i);
        }
    }
};

std::vector<MetadataPattern> patternsOf(const std::vector<Setup::Marker>& markers)
{
    std::vector<MetadataPattern> patterns;
    for (const Setup::Marker& marker : markers) {
        if (!marker.text.empty())
            patterns.emplace_back(marker.text, marker.isNumber ? MetadataPattern::NumberValue
                                                               : MetadataPattern::StringValue);
    }
    return patterns;
}

// Frees a matching on a thread of its own when nobody needs it any more: that takes long enough to
// be felt.
class Disposal : public QRunnable {
public:
    explicit Disposal(std::shared_ptr<const Matching> matching) : matching_(std::move(matching)) {}

    void run() override { matching_.reset(); }

private:
    std::shared_ptr<const Matching> matching_;
};

std::shared_ptr<const Matching> freedElsewhere(std::shared_ptr<const Matching> matching)
{
    const Matching* const plain = matching.get();
    return {plain, [matching = std::move(matching)](const Matching* /*plain*/) mutable {
                QThreadPool::globalInstance()->start(new Disposal(std::move(matching)));
            }};
}

bool areSame(const std::vector<SortKey>& left, const std::vector<SortKey>& right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const SortKey& l, const SortKey& r) {
                          return l.column == r.column && l.isDescending == r.isDescending;
                      });
}

bool isAnyBad(const std::vector<AuxResult>& results)
{
    return std::any_of(results.begin(), results.end(),
                       [](const AuxResult& result) { return !result.error.empty(); });
}

} // namespace

std::size_t columnIndex(std::vector<std::string>& names, const std::string& name)
{
    const auto found = std::find(names.begin(), names.end(), name);
    const auto index = static_cast<std::size_t>(found - names.begin());
    if (found == names.end())
        names.push_back(name);
    return index;
}

Session::Session(std::size_t jobs)
    : jobs_(jobs), matcher_(std::make_unique<Latest>()), orderer_(std::make_unique<Latest>()),
      filterer_(std::make_unique<Latest>()), answerer_(std::make_unique<Latest>()),
      gridMaker_(std::make_unique<Latest>())
{
    timer_.setInterval(lookMilliseconds);
    connect(&timer_, &QTimer::timeout, this, &Session::lookAtWalk);
}

Session::~Session() = default;

void Session::open(const Setup& setup)
{
    // Where the window was as it begins, there is nothing to come back to.
    if (setup_ != Setup() && withSourceOf(setup, setup_) != setup_)
        keepForUndo();
    lastStep_.clear();
    if (setup != setup_ || !walk_)
        take(setup);
    else
        walkAgain();
}

void Session::change(const Setup& setup, const QString& step)
{
    if (setup == setup_)
        return;
    const bool isOneStep = !step.isEmpty() && step == lastStep_ && canUndo() &&
                           sinceStep_.elapsed() < stepMilliseconds;
    // Only of the source nothing is undone.
    if (withSourceOf(setup, setup_) != setup_) {
        if (!isOneStep)
            keepForUndo();
        undone_.future.clear();
    }
    lastStep_ = step;
    sinceStep_.start();
    take(setup);
}

void Session::keepForUndo()
{
    undone_.future.clear();
    undone_.past.push_back(setup_);
    if (undone_.past.size() > mostUndone)
        undone_.past.erase(undone_.past.begin());
}

void Session::undo()
{
    if (!canUndo())
        return;
    const Setup setup = withSourceOf(undone_.past.back(), setup_);
    undone_.past.pop_back();
    undone_.future.push_back(setup_);
    lastStep_.clear();
    take(setup);
}

void Session::redo()
{
    if (!canRedo())
        return;
    const Setup setup = withSourceOf(undone_.future.back(), setup_);
    undone_.future.pop_back();
    undone_.past.push_back(setup_);
    lastStep_.clear();
    take(setup);
}

void Session::take(const Setup& setup)
{
    const bool isOtherSource = !haveSameSource(setup, setup_) || !walk_;
    const bool areOtherRows = !haveSameRows(setup_.auxRows, setup.auxRows);
    const std::vector<std::string> sortBefore = effective_.sort;
    const bool hadReading = reading_ != nullptr;
    setup_ = setup;
    effective_ = withSourceOf(effective_, setup_);
    const bool isOtherReading = takeReading();
    effective_.auxRows = goodRows();
    takeSort();
    Q_EMIT setupChanged();

    if (isOtherSource && (setup_.hasSource() || walk_ || hasWalked_))
        startWalk();
    else if (isOtherReading || areOtherRows || hadReading != (reading_ != nullptr))
        startMatching();
    else if (sortBefore != effective_.sort)
        startOrdering();
}

// Returns whether another reading is in effect now.
bool Session::takeReading()
{
    problem_.reset();
    const CountingTemplates templates(setup_.templates);
    Setup wanted = effective_;
    takeReadingOf(wanted, setup_);
    const bool isOther = !haveSameReading(effective_, wanted);
    try {
        if (!setup_.hasReading())
            reading_.reset();
        else if (setup_.by == Setup::By::Markers)
            reading_ = std::make_shared<const Reading>(patternsOf(setup_.markers));
        else
            reading_ = std::make_shared<const Reading>(TemplateList(templates.texts));
    } catch (const TemplateError& failure) {
        const auto text = std::find(templates.texts.begin(), templates.texts.end(), failure.text);
        const auto index = static_cast<std::size_t>(text - templates.texts.begin());
        problem_ = ReadingProblem{templates.lines[std::min(index, templates.lines.size() - 1)],
                                  failure.position, failure.what()};
        return false;
    }
    effective_ = std::move(wanted);
    return isOther;
}

// A column to sort by may have gone.
void Session::takeSort()
{
    effective_.sort = setup_.sort;
    sortKeys_.clear();
    if (!reading_ || !setup_.hasSource() || setup_.sort.empty())
        return;
    try {
        sortKeys_ = checked(effective_).sortKeys;
    } catch (const Failure&) {
        effective_.sort.clear();
    }
}

// The rows whose tags are good, and whose wildcards are not known to select nothing.
std::vector<Setup::AuxRow> Session::goodRows() const
{
    std::vector<Setup::AuxRow> rows;
    for (const Setup::AuxRow& row : setup_.auxRows) {
        if (!row.wildcard.empty() && PlainTagValidator().validate(row.tag).isValid() &&
            row.tag.find('=') == std::string::npos)
            rows.push_back(row);
    }
    return rows;
}

std::vector<std::string> Session::columnNames() const
{
    std::vector<std::string> names;
    if (reading_) {
        for (const MetadataPattern& pattern : reading_->patterns())
            names.push_back(pattern.pattern);
    }
    return names;
}

void Session::walkAgain()
{
    if (setup_.hasSource())
        startWalk();
}

void Session::stopWalk()
{
    if (!isWalking())
        return;
    walk_->stop();
    sinceStop_.start();
}

void Session::startWalk()
{
    walk_.reset();
    sinceStop_.invalidate();
    hasWalked_ = false;
    walkEnd_ = {};
    matching_.reset();
    isMatching_ = false;
    ++matchings_;
    matcher_->cancel();
    files_ = Files();
    filter_.cases.clear();
    dropShown();
    try {
        if (setup_.hasSource()) {
            walk_ = std::make_unique<Walk>(checkedSource(setup_));
            timer_.start();
            sinceProgress_.start();
        }
    } catch (const Failure& failure) {
        walkEnd_.error = failure.what();
        hasWalked_ = true;
        Q_EMIT failed(shown(failure.what()));
    }
    Q_EMIT filesChanged();
    Q_EMIT matchingChanged();
    Q_EMIT shownChanged();
    Q_EMIT progressed();
}

void Session::lookAtWalk()
{
    if (!walk_ || hasWalked_) {
        timer_.stop();
        return;
    }
    if (sinceStop_.isValid() && sinceStop_.hasExpired(leaveMilliseconds)) {
        sinceStop_.invalidate();
        walk_->leave();
    }
    const bool hasEnded = walk_->hasEnded();
    if (!hasEnded && sinceProgress_.elapsed() < progressMilliseconds)
        return;
    sinceProgress_.start();
    Files files = walk_->files();
    const bool hasMore = files.count() != files_.count() || hasEnded;
    files_ = std::move(files);
    if (hasEnded) {
        hasWalked_ = true;
        walkEnd_ = walk_->end();
        timer_.stop();
        // The files stand in another order now.
        dropShown();
    }
    if (hasMore)
        Q_EMIT filesChanged();
    Q_EMIT progressed();
    if (!hasEnded)
        return;
    if (!walkEnd_.error.empty())
        Q_EMIT failed(shown(walkEnd_.error));
    startMatching();
    startFiltering();
}

// Tells of what a job throws, such as that memory is out, and ends what it was to do.
void Session::runGuarded(Latest& thread, bool& isBusy, const std::size_t& latest, Latest::Job job)
{
    thread.run([this, &isBusy, &latest, number = latest,
                job = std::move(job)](const std::atomic<bool>& isCancelled) {
        QString error;
        try {
            return job(isCancelled);
        } catch (const std::bad_alloc&) {
            error = tr("not enough memory");
        } catch (const std::exception& failure) {
            error = shown(failure.what());
        }
        QMetaObject::invokeMethod(
            this,
            [this, &isBusy, &latest, number, error] {
                if (number != latest)
                    return;
                isBusy = false;
                Q_EMIT failed(error);
                Q_EMIT matchingChanged();
            },
            Qt::QueuedConnection);
    });
}

void Session::startMatching()
{
    const std::size_t number = ++matchings_;
    if (isWalking() || !walk_)
        return;
    if (!reading_) {
        matcher_->cancel();
        isMatching_ = false;
        matching_.reset();
        Q_EMIT matchingChanged();
        startFiltering();
        return;
    }
    isMatching_ = true;
    Q_EMIT matchingChanged();
    const std::string rootName = setup_.list ? listName(*setup_.list) : setup_.root;
    runGuarded(*matcher_, isMatching_, matchings_,
               [this, number, rootName, files = files_, reading = *reading_, rows = setup_.auxRows,
                keys = sortKeys_, jobs = jobs_](const std::atomic<bool>& isCancelled) mutable {
                   std::shared_ptr<const Matching> matching =
                       matchFiles(files, reading, rows, rootName, jobs, isCancelled);
                   if (!matching)
                       return;
                   matching = freedElsewhere(std::move(matching));
                   // Where a row of auxiliary files was left out, so were its columns.
                   if (!matching->import || isAnyBad(matching->aux))
                       keys.clear();
                   std::optional<CaseOrder> order;
                   if (!keys.empty())
                       order = orderOf(matching->import->table(), keys);
                   const auto finish = [this, number, matching, order = std::move(order),
                                        keys]() mutable {
                       if (number != matchings_)
                           return;
                       isMatching_ = false;
                       matching_ = std::move(matching);
                       caseOrder_ = std::move(order);
                       filter_.cases.clear();
                       effective_.auxRows.clear();
                       for (std::size_t i = 0; i < matching_->aux.size(); ++i) {
                           const Setup::AuxRow& row = setup_.auxRows[i];
                           if (matching_->aux[i].error.empty() && !row.tag.empty())
                               effective_.auxRows.push_back(row);
                       }
                       if (!matching_->failure.empty())
                           Q_EMIT failed(shown(matching_->failure));
                       takeSort();
                       if (!areSame(keys, sortKeys_))
                           startOrdering();
                       Q_EMIT matchingChanged();
                       startFiltering();
                   };
                   QMetaObject::invokeMethod(this, finish, Qt::QueuedConnection);
               });
}

void Session::startOrdering()
{
    const std::size_t number = ++orders_;
    if (!matching_ || !matching_->import || isMatching_)
        return;
    isOrdering_ = true;
    runGuarded(*orderer_, isOrdering_, orders_,
               [this, number, matching = matching_,
                keys = sortKeys_](const std::atomic<bool>& isCancelled) {
                   std::optional<CaseOrder> order;
                   if (!keys.empty())
                       order = orderOf(matching->import->table(), keys);
                   if (isCancelled)
                       return;
                   QMetaObject::invokeMethod(
                       this,
                       [this, number, matching, order = std::move(order)]() mutable {
                           if (number != orders_)
                               return;
                           isOrdering_ = false;
                           if (matching != matching_)
                               return;
                           caseOrder_ = std::move(order);
                           Q_EMIT matchingChanged();
                       },
                       Qt::QueuedConnection);
               });
}

void Session::filter(const PathFilter& filter)
{
    filter_ = filter;
    startFiltering();
}

// What is shown, or about to be, are indices of files that are no longer there.
void Session::dropShown()
{
    ++filters_;
    filterer_->cancel();
    isFiltering_ = false;
    shown_.reset();
}

void Session::startFiltering()
{
    const std::size_t number = ++filters_;
    if (filter_.isEmpty()) {
        filterer_->cancel();
        isFiltering_ = false;
        shown_.reset();
        Q_EMIT shownChanged();
        return;
    }
    isFiltering_ = true;
    runGuarded(*filterer_, isFiltering_, filters_,
               [this, number, files = files_, matching = matching_,
                filter = filter_](const std::atomic<bool>& isCancelled) {
                   const bool isOfFiles = matching && matching->files.count() == files.count();
                   std::vector<std::uint32_t> found = casetable::shownFiles(
                       files, isOfFiles ? matching.get() : nullptr, filter, isCancelled);
                   if (isCancelled)
                       return;
                   QMetaObject::invokeMethod(
                       this,
                       [this, number, found = std::move(found)]() mutable {
                           if (number != filters_)
                               return;
                           isFiltering_ = false;
                           shown_ = std::move(found);
                           Q_EMIT shownChanged();
                       },
                       Qt::QueuedConnection);
               });
}

const std::vector<std::uint32_t>* Session::shownFiles() const
{
    return shown_ ? &*shown_ : nullptr;
}

std::string Session::sortValue(const SortKey& key) const
{
    Setup unsorted = effective_;
    unsorted.sort.clear();
    Options options = checked(unsorted);
    options.sortKeys = {key};
    return sortValues(options).front();
}

// Has another thread find an answer; that which is returned there tells it here.
void Session::ask(std::function<std::function<void()>(const std::atomic<bool>& isCancelled)> find)
{
    isAsking_ = true;
    answerer_->run([this, number = ++questions_,
                    find = std::move(find)](const std::atomic<bool>& isCancelled) {
        const std::function<void()> tell = find(isCancelled);
        if (isCancelled)
            return;
        QMetaObject::invokeMethod(
            this,
            [this, number, tell] {
                if (number != questions_)
                    return;
                isAsking_ = false;
                tell();
            },
            Qt::QueuedConnection);
    });
}

void Session::name(const NamedBytes& bytes)
{
    std::vector<std::string> templates;
    if (setup_.by == Setup::By::Templates)
        templates = setup_.templates;
    ask([this, bytes, templates, files = files_](const std::atomic<bool>& isCancelled) {
        NamedTemplates result;
        QString error;
        try {
            result = nameBytes(bytes, templates, findNeighbours(files, bytes.path, isCancelled));
        } catch (const TemplateError& failure) {
            error = "mend the template first: " + shown(failure.what());
        } catch (const std::exception& failure) {
            error = shown(failure.what());
        }
        return [this, result, error] { Q_EMIT named(result, error); };
    });
}

void Session::suggest()
{
    ask([this, files = files_, jobs = jobs_](const std::atomic<bool>& isCancelled) {
        std::vector<Suggestion> found;
        QString error;
        try {
            found = suggestionsFor(files, jobs, isCancelled);
        } catch (const std::exception& failure) {
            error = shown(failure.what());
        }
        return [this, found, error] {
            if (!error.isEmpty())
                Q_EMIT failed(error);
            Q_EMIT suggested(found);
        };
    });
}

void Session::makeGrid(std::size_t rowColumn, std::size_t columnColumn)
{
    const std::size_t number = ++grids_;
    isMakingGrid_ = true;
    runGuarded(*gridMaker_, isMakingGrid_, grids_,
               [this, number, rowColumn, columnColumn,
                matching = matching_](const std::atomic<bool>& isCancelled) {
                   Grid grid = gridOf(matching->import->table(), rowColumn, columnColumn);
                   if (isCancelled)
                       return;
                   QMetaObject::invokeMethod(
                       this,
                       [this, number, grid = std::move(grid)] {
                           if (number != grids_)
                               return;
                           isMakingGrid_ = false;
                           Q_EMIT gridMade(grid);
                       },
                       Qt::QueuedConnection);
               });
}

void Session::save(const std::string& file, const SavedRows& rows)
{
    // While files are matched, the table is not yet that of the reading in effect.
    if (isMatching_ || !matching_ || !matching_->import) {
        Q_EMIT failed(tr("there is no table yet"));
        return;
    }
    if (!walkEnd_.error.empty()) {
        Q_EMIT failed(shown(walkEnd_.error));
        return;
    }
    try {
        const Options options = savingOptions(effective_, rows, file);
        QString sentence = tr("Saved");
        if (options.format == nullptr)
            sentence += tr(" as CSV, as its name stands for no format");
        if (options.sortKeys.size() != sortKeys_.size())
            sentence += tr(", not sorted, as these rows cannot be so");
        if (walkEnd_.isStopped)
            sentence += tr(", of the files read before the stop only");
        write(file, sentence + ": " + shown(file),
              [options, matching = matching_] { saveTable(options, *matching); });
    } catch (const Failure& failure) {
        Q_EMIT failed(shown(failure.what()));
    }
}

void Session::write(const std::string& file, const QString& sentence, std::function<void()> act)
{
    if (std::find(saving_.begin(), saving_.end(), file) != saving_.end()) {
        Q_EMIT failed(tr("%1 is still being written").arg(shown(file)));
        return;
    }
    try {
        background_.run(*this,
                        [this, file, sentence, act = std::move(act)]() -> BackgroundJobs::Effect {
                            QString error;
                            try {
                                act();
                            } catch (const std::exception& failure) {
                                error = shown(failure.what());
                            }
                            return [this, file, sentence, error] {
                                saving_.erase(std::find(saving_.begin(), saving_.end(), file));
                                Q_EMIT saved(sentence, error);
                            };
                        });
        saving_.push_back(file);
    } catch (const Failure& failure) {
        Q_EMIT failed(shown(failure.what()));
    }
}

bool Session::isIdle() const
{
    return !isWalking() && !isMatching_ && !isOrdering_ && !isFiltering_ && !isAsking_ &&
           !isMakingGrid_ && background_.areDone();
}

} // namespace casetable
