#include "casetable/listing/ReadList.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "casetable/system/ExitCode.h"
#include "casetable/system/Interrupt.h"

namespace casetable {

namespace {

// How often an interrupt is looked for while nothing comes.
const int intervalMilliseconds = 50;

// How much is read at once.
const std::size_t pieceBytes = std::size_t{64} * 1024;

} // namespace

std::string listName(const std::string& file)
{
    return file == "-" ? "standard input" : file;
}

ListFile::ListFile(const std::string& file) : name_(listName(file))
{
    if (file != "-") {
        // Otherwise to open a named pipe would wait for its writer, and no interrupt could end
        // that; isReady() waits instead.
        opened_ = Descriptor(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
        if (!opened_.isOpen())
            fail(errno);
    } else if (::fcntl(STDIN_FILENO, F_GETFD) < 0) {
        fail(errno); // Otherwise what is opened next would be taken for the list.
    }
    struct stat status = {};
    if (::fstat(descriptor(), &status) != 0 || !S_ISREG(status.st_mode))
        return;
    begin_ = ::lseek(descriptor(), 0, SEEK_CUR);
    if (begin_ >= 0 && begin_ < status.st_size)
        bytes_ = static_cast<std::size_t>(status.st_size - begin_);
}

ListReader::Reread ListFile::reread() const
{
    if (begin_ < 0)
        return nullptr;
    return [this](const auto& take) {
        std::array<char, pieceBytes> buffer;
        const std::size_t all = bytesRead_;
        for (std::size_t done = 0; done < all;) {
            throwIfInterrupted();
            const ssize_t size =
                ::pread(descriptor(), buffer.data(), std::min(buffer.size(), all - done),
                        begin_ + static_cast<off_t>(done));
            if (size < 0 && errno == EINTR)
                continue;
            if (size <= 0)
                fail(size < 0 ? errno : ESTALE); // It has become shorter.
            take(std::string_view(buffer.data(), static_cast<std::size_t>(size)));
            done += static_cast<std::size_t>(size);
        }
    };
}

void ListFile::readInto(ListReader& reader)
{
    std::array<char, pieceBytes> buffer;
    for (;;) {
        throwIfInterrupted();
        if (!isReady())
            continue;
        const ssize_t size = ::read(descriptor(), buffer.data(), buffer.size());
        // A signal cut it short, or nothing has come after all.
        if (size < 0 && (errno == EINTR || errno == EAGAIN))
            continue;
        if (size < 0)
            fail(errno);
        if (size == 0)
            break;
        bytesRead_ += static_cast<std::size_t>(size);
        reader.append(std::string_view(buffer.data(), static_cast<std::size_t>(size)));
    }
    reader.finish();
}

// Waits a moment for bytes or the end; answers whether one has come.
bool ListFile::isReady() const
{
    pollfd input = {descriptor(), POLLIN, 0};
    const int count = ::poll(&input, 1, intervalMilliseconds);
    if (count < 0 && errno != EINTR)
        fail(errno);
    return count > 0;
}

void ListFile::fail(int error) const
{
    throw Failure(ExitCode::ImportFailed, name_ + ": " + std::generic_category().message(error));
}

} // namespace casetable
