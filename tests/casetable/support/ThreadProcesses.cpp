#include "tests/casetable/support/ThreadProcesses.h"

#include <cstring>
#include <memory>
#include <utility>

#include "casetable/system/Thread.h"

namespace casetable {
namespace tests {

namespace {

struct Part {
    std::size_t from;
    std::string bytes;
    bool mark;
};

struct PostOffice {
    std::mutex mutex;
    std::vector<std::deque<Part>> parts; // For each process.
    std::optional<int> status;
};

class ThreadProcess : public Processes {
public:
    ThreadProcess(PostOffice& office, std::size_t number) : office_(office), number_(number) {}

    std::size_t number() const override { return number_; }
    std::size_t count() const override { return office_.parts.size(); }
    std::size_t countHere() const override { return count(); }
    std::string machine() const override { return "machine" + std::to_string(number_); }

    void send(std::size_t to, const char* bytes, std::size_t size, bool mark) override
    {
        const std::lock_guard<std::mutex> lock(office_.mutex);
        office_.parts[to].push_back({number_, std::string(bytes, size), mark});
    }

    std::optional<Arrival> arrival() override
    {
        const std::lock_guard<std::mutex> lock(office_.mutex);
        if (office_.status)
            throw Aborted{*office_.status};
        std::deque<Part>& parts = office_.parts[number_];
        if (parts.empty())
            return std::nullopt;
        return Arrival{parts.front().from, parts.front().bytes.size(), parts.front().mark};
    }

    void receive(const Arrival& arrival, char* bytes) override
    {
        const std::lock_guard<std::mutex> lock(office_.mutex);
        std::deque<Part>& parts = office_.parts[number_];
        std::memcpy(bytes, parts.front().bytes.data(), arrival.size);
        parts.pop_front();
    }

    [[noreturn]] void abort(int status) override
    {
        const std::lock_guard<std::mutex> lock(office_.mutex);
        office_.status = status;
        throw Aborted{status};
    }

private:
    PostOffice& office_;
    const std::size_t number_;
};

} // namespace

std::optional<int> runAsProcesses(std::size_t count,
                                  const std::function<void(Processes& processes)>& act)
{
    PostOffice office;
    office.parts.resize(count);
    std::vector<std::unique_ptr<Thread>> threads;
    for (std::size_t number = 0; number < count; ++number) {
        threads.push_back(Thread::start([&office, &act, number] {
            ThreadProcess process(office, number);
            try {
                act(process);
            } catch (const Aborted&) {
                // It was told.
            }
        }));
    }
    threads.clear();
    return office.status;
}

} // namespace tests
} // namespace casetable
