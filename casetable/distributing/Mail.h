#ifndef CASETABLE_DISTRIBUTING_MAIL_H
#define CASETABLE_DISTRIBUTING_MAIL_H

#include <cstddef>
#include <deque>
#include <map>
#include <optional>
#include <string>

#include "casetable/distributing/Processes.h"

namespace casetable {

/// Whole messages between processes, of any length. Used by the main thread of a process alone.
class Mail {
public:
    /// The most that is sent at once: a library that counts bytes in an `int` can send no more.
    static constexpr std::size_t mostBytes = std::size_t{1} << 30U;

    struct Letter {
        std::size_t from;
        std::string message;
    };

    /// Cuts messages into parts of at most so many bytes.
    explicit Mail(Processes& processes, std::size_t mostBytesAtOnce = mostBytes)
        : processes_(processes), mostBytes_(mostBytesAtOnce)
    {
    }

    /// Sends a message; to this process too.
    void send(std::size_t to, std::string message);

    /// The next message that has come in whole; nothing where none has. Messages of one process
    /// come in their order. Throws BrokenBytes where one has been damaged.
    std::optional<Letter> receive();

private:
    Processes& processes_;
    const std::size_t mostBytes_;
    std::deque<Letter> own_;                      // From this process to itself.
    std::map<std::size_t, std::string> incoming_; // By process: what has come of a message.
};

} // namespace casetable

#endif
