#include "casetable/distributing/Distributed.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "casetable/distributing/Coordinator.h"
#include "casetable/distributing/Messages.h"
#include "casetable/distributing/Processes.h"
#include "casetable/distributing/Worker.h"
#include "casetable/running/Ending.h"
#include "casetable/system/Bytes.h"
#include "casetable/system/Console.h"
#include "casetable/system/Interrupt.h"
#include "casetable/system/Output.h"
#include "casetable/system/Processors.h"
#include "casetable/system/StatusLine.h"

namespace casetable {

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

const std::size_t first = 0; // The number of the process that writes.

// How long to sleep between two looks at the mail: where others may be waiting for an answer, and
// where there is nothing left but to wait for the end.
const Milliseconds interval(1);
const Milliseconds longInterval(10);

// How often it is told what was met.
const Milliseconds seenInterval(250);

struct OptionsHere {
    Options options;
    bool readsAhead; // Whether threads may list folders ahead, which mostly wait.
};

// What the options say is the same for all processes. But where they leave that open, each imports
// on as many threads as its machine has processors for each of its processes.
std::optional<OptionsHere> optionsHere(const std::function<std::optional<Options>()>& parse,
                                       const Processes& processes)
{
    std::optional<Options> options = parse();
    if (!options)
        return std::nullopt;
    const bool readsAhead = options->jobs != 1; // One job is one thread.
    if (!options->jobs)
        options->jobs = std::max<std::size_t>(availableProcessors() / processes.countHere(), 1);
    return OptionsHere{std::move(*options), readsAhead};
}

// One process of a run, with options.
class Process {
public:
    Process(const OptionsHere& here, Processes& processes, Console& console, Mail& mail,
            Milliseconds progressInterval = {})
        : options_(here.options), processes_(processes), console_(console), mail_(mail),
          status_(console),
          progressInterval_(progressInterval), begin_{console.showsRemarks(),
                                                      console.showsRemarks() ||
                                                          console.showsProgress()},
          worker_(here.options, here.readsAhead, processes.machine(), processes.count())
    {
        if (isFirst())
            coordinator_.emplace(processes.count(), options_.source, console);
        for (const std::size_t child : {2 * number() + 1, 2 * number() + 2})
            missingResults_ += child < processes.count() ? 1 : 0;
    }

    // Serves until this process has nothing left to do: the first, when it has the results of all
    // and they are returned; another, when the first says that the run is over.
    std::optional<ImportedFiles> serve()
    {
        for (;;) {
            bool isIdle = true;
            while (auto message = worker_.takeMessage()) {
                mail_.send(first, std::move(*message));
                isIdle = false;
            }
            while (auto letter = mail_.receive()) {
                if (take(std::move(*letter)))
                    return std::nullopt;
                isIdle = false;
            }
            if (auto result = worker_.takeResult()) {
                own_ = std::move(*result);
                isIdle = false;
            }
            mergeResults();
            if (own_ && missingResults_ == 0 && !isSent_) {
                if (!isFirst()) {
                    mail_.send((number() - 1) / 2,
                               resultMessage(std::move(*own_), options_.source.selection));
                    isSent_ = true;
                } else if (coordinator_->isComplete()) {
                    return std::move(own_);
                }
            }
            lookForInterrupt();
            tellSeen();
            if (isIdle)
                worker_.wait(isSent_ ? longInterval : interval);
        }
    }

    boost::shared_ptr<FileInfoInterface const> root() const { return worker_.root(); }
    std::size_t hiddenLeftOut() const { return coordinator_->hiddenLeftOut(); }

private:
    std::size_t number() const { return processes_.number(); }
    bool isFirst() const { return number() == first; }

    // Whether the run is over.
    bool take(Mail::Letter letter)
    {
        ByteReader reader(letter.message);
        const auto kind = static_cast<MessageKind>(reader.byte());
        switch (kind) {
        case MessageKind::Begin:
            begin_.read(reader);
            reader.end();
            worker_.begin(begin_);
            break;
        case MessageKind::Piece:
            takePiece(reader);
            break;
        case MessageKind::Result:
            results_.push_back(std::move(letter.message));
            break;
        case MessageKind::Over:
            return true;
        case MessageKind::ShowSights:
            reader.end();
            mail_.send(first, messageOf(MessageKind::Sights,
                                        Sights{processes_.machine(), worker_.sights()}));
            break;
        case MessageKind::Ready:
        case MessageKind::Sights:
        case MessageKind::Listed:
        case MessageKind::Seen:
        case MessageKind::Failed:
            if (!coordinator_)
                throw BrokenBytes("a message is not for this process");
            coordinate(kind, letter.from, reader);
            break;
        default:
            throw BrokenBytes("a message is of no known kind");
        }
        return false;
    }

    void takePiece(ByteReader& reader)
    {
        const std::optional<std::size_t> piece = readPiece(reader);
        reader.end();
        worker_.give(piece);
    }

    // Takes what goes to the first process.
    void coordinate(MessageKind kind, std::size_t from, ByteReader& reader)
    {
        const Coordinator::Send send = [this](std::size_t to, std::string message) {
            mail_.send(to, std::move(message));
        };
        const auto read = [&reader](auto content) {
            content.read(reader);
            reader.end();
            return content;
        };
        if (kind == MessageKind::Ready)
            coordinator_->ready(from, read(Ready()), begin_, send);
        else if (kind == MessageKind::Sights)
            coordinator_->sights(read(Sights()), worker_.sights());
        else if (kind == MessageKind::Listed)
            coordinator_->listed(from, read(Listed()), send);
        else if (kind == MessageKind::Seen)
            coordinator_->seen(from, read(Seen()));
        else
            coordinator_->failed(read(Failed()));
    }

    // Merges what others have sent into what this process has.
    void mergeResults()
    {
        if (!own_)
            return;
        for (const std::string& message : std::exchange(results_, {})) {
            ByteReader reader(message);
            reader.byte();
            mergeResult(reader, options_, *own_);
            --missingResults_;
        }
    }

    void lookForInterrupt()
    {
        if (isFirst())
            throwIfInterrupted();
        else if (isInterrupted() && !std::exchange(isInterruptTold_, true))
            tellInterrupt();
    }

    void tellInterrupt()
    {
        Failed failed;
        try {
            throwIfInterrupted();
        } catch (const Interrupted& interrupted) {
            failed.signal = interrupted.signal;
        }
        mail_.send(first, messageOf(MessageKind::Failed, failed));
    }

    void tellSeen()
    {
        if (isFirst()) {
            coordinator_->seen(first, worker_.seen());
            status_.update([this] { return coordinator_->progress(); });
            if (Clock::now() - progressTold_ >= progressInterval_) {
                progressTold_ = Clock::now();
                console_.progress(coordinator_->progress());
            }
        } else if (begin_.showsProgress && !isSent_ && Clock::now() - seenTold_ > seenInterval) {
            seenTold_ = Clock::now();
            mail_.send(first, messageOf(MessageKind::Seen, worker_.seen()));
        }
    }

    const Options& options_;
    Processes& processes_;
    Console& console_;
    Mail& mail_;
    StatusLine status_;
    const Milliseconds progressInterval_;
    Clock::time_point progressTold_ = Clock::now();
    Begin begin_;
    std::optional<Coordinator> coordinator_; // Of the first process alone.
    std::vector<std::string> results_;       // Of other processes, not merged yet.
    std::size_t missingResults_ = 0;         // That are to come from others.
    std::optional<ImportedFiles> own_;       // With what was merged into it.
    bool isSent_ = false;
    bool isInterruptTold_ = false;
    Clock::time_point seenTold_ = Clock::now();
    Worker worker_; // The last, so that it ends first.
};

// Waits for the first process to end the run.
void waitForEnd(Mail& mail)
{
    for (;;) {
        while (const auto letter = mail.receive()) {
            if (ByteReader(letter->message).byte() == static_cast<unsigned char>(MessageKind::Over))
                return;
        }
        std::this_thread::sleep_for(longInterval);
    }
}

// Calls `act`, and where that throws, has the first process end the run.
template <class Act> void tellIfItFails(Mail& mail, const std::string& machine, const Act& act)
{
    try {
        act();
    } catch (...) {
        Failed failed = presentFailure();
        failed.machine = machine;
        mail.send(first, messageOf(MessageKind::Failed, failed));
        waitForEnd(mail);
    }
}

ExitCode runFirst(const OptionsHere& here, Processes& processes, Console& console, Mail& mail,
                  Milliseconds progressInterval)
{
    const Options& options = here.options;
    if (options.quiet)
        console.beQuiet();
    Output output(options.output);
    checkOutput(options, output);
    std::optional<ImportedFiles> files;
    boost::shared_ptr<FileInfoInterface const> root;
    std::size_t hiddenLeftOut = 0;
    {
        Process process(here, processes, console, mail, progressInterval);
        const Ending ending = endingOf(
            [&] {
                files = process.serve();
                return ExitCode::Cases;
            },
            console);
        // The threads of the process may be kept waiting by the system, so they are not waited for.
        if (!files)
            processes.abort(ending.status);
        root = process.root();
        hiddenLeftOut = process.hiddenLeftOut();
    }
    const ExitCode code =
        finishImport(options, std::move(*files), root, hiddenLeftOut, output, console);
    for (std::size_t other = first + 1; other < processes.count(); ++other)
        mail.send(other, messageOf(MessageKind::Over));
    return code;
}

void runOther(const OptionsHere& here, Processes& processes, Console& console, Mail& mail)
{
    Process process(here, processes, console, mail);
    tellIfItFails(mail, processes.machine(), [&process] { process.serve(); });
}

} // namespace

int runDistributed(const std::function<std::optional<Options>()>& parse, Processes& processes,
                   Console& console, const DistributedLimits& limits)
{
    catchInterrupts();
    Mail mail(processes, limits.mostBytes);
    if (processes.number() != first) {
        tellIfItFails(mail, processes.machine(), [&] {
            if (const auto here = optionsHere(parse, processes))
                runOther(*here, processes, console, mail);
        });
        return 0;
    }
    const Ending ending = endingOf(
        [&] {
            const auto here = optionsHere(parse, processes);
            return here ? runFirst(*here, processes, console, mail, limits.progressInterval)
                        : ExitCode::Cases;
        },
        console);
    if (ending.status > static_cast<int>(ExitCode::NoCases))
        processes.abort(ending.status);
    return ending.status;
}

} // namespace casetable
