#include "casetable/listing/ReadList.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "casetable/listing/FileList.h"
#include "casetable/system/Console.h"
#include "casetable/system/Descriptor.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/Interrupt.h"
#include "casetable/system/StatusLine.h"

namespace casetable {

namespace {

// How often an interrupt is looked for while nothing comes.
const int intervalMilliseconds = 50;

// How much is read at once.
const std::size_t pieceBytes = std::size_t{64} * 1024;

class Input {
public:
    explicit Input(const std::string& file) : name_(listName(file))
    {
        if (file == "-")
            return;
        // Otherwise to open a named pipe would wait for its writer, and no interrupt could end
        // that; isReady() waits instead.
        opened_ = Descriptor(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
        if (!opened_.isOpen())
            fail(errno);
    }

    // Waits a moment for bytes or the end; answers whether one has come.
    bool isReady()
    {
        pollfd input = {descriptor(), POLLIN, 0};
        const int count = ::poll(&input, 1, intervalMilliseconds);
        if (count < 0 && errno != EINTR)
            fail(errno);
        return count > 0;
    }

    // Reads into `bytes`, which refer to this object, what has come; nothing means the end. Answers
    // false, and leaves them alone, where a signal cut it short or nothing has come after all.
    bool read(std::string_view& bytes)
    {
        const ssize_t size = ::read(descriptor(), buffer_.data(), buffer_.size());
        if (size < 0 && (errno == EINTR || errno == EAGAIN))
            return false;
        if (size < 0)
            fail(errno);
        bytes = std::string_view(buffer_.data(), static_cast<std::size_t>(size));
        return true;
    }

private:
    int descriptor() const { return opened_.isOpen() ? opened_.number() : STDIN_FILENO; }

    [[noreturn]] void fail(int error) const
    {
        throw Failure(ExitCode::ImportFailed,
                      name_ + ": " + std::generic_category().message(error));
    }

    const std::string name_;
    Descriptor opened_; // Nothing for standard input, which is not ours to close.
    std::array<char, pieceBytes> buffer_;
};

} // namespace

std::string listName(const std::string& file)
{
    return file == "-" ? "standard input" : file;
}

void readList(const std::string& file, FileList& list, Console& console)
{
    StatusLine status(console);
    Input input(file);
    for (;;) {
        throwIfInterrupted();
        status.update(
            [&list] { return std::to_string(list.pathCount()) + " paths: " + list.name(); });
        std::string_view bytes;
        if (!input.isReady() || !input.read(bytes))
            continue;
        if (bytes.empty())
            break;
        list.append(bytes);
    }
    list.finish();
    for (const std::string& warning : list.warnings())
        console.warning(warning);
}

} // namespace casetable
