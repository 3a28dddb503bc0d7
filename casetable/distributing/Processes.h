#ifndef CASETABLE_DISTRIBUTING_PROCESSES_H
#define CASETABLE_DISTRIBUTING_PROCESSES_H

#include <cstddef>
#include <optional>
#include <string>

namespace casetable {

/// The processes that make one run together, and how they tell each other something, seen from one
/// of them. Used by its main thread alone.
class Processes {
public:
    virtual ~Processes() = default;

    /// The number of this process, from 0, and how many there are.
    virtual std::size_t number() const = 0;
    virtual std::size_t count() const = 0;

    /// How many of them are on this machine, this one included.
    virtual std::size_t countHere() const = 0;

    /// What this machine is called.
    virtual std::string machine() const = 0;

    /// Sends bytes to another process, and a mark that whoever receives them sees. Those for one
    /// process come there in their order. May wait until the other receives them.
    virtual void send(std::size_t to, const char* bytes, std::size_t size, bool mark) = 0;

    /// What one send() of another process has sent.
    struct Arrival {
        std::size_t from;
        std::size_t size;
        bool mark;
    };

    /// What has arrived and is to be received next; nothing where nothing has.
    virtual std::optional<Arrival> arrival() = 0;

    /// Receives it, to where there is room for it.
    virtual void receive(const Arrival& arrival, char* bytes) = 0;

    /// Ends all processes at once; the run's exit code becomes `status`.
    [[noreturn]] virtual void abort(int status) = 0;

protected:
    Processes() = default;
    Processes(const Processes&) = default;
    Processes& operator=(const Processes&) = default;
};

} // namespace casetable

#endif
