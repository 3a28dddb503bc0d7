#include "casetable/distributing/Mail.h"

#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/system/Bytes.h"
#include "tests/casetable/support/ThreadProcesses.h"

namespace casetable {
namespace tests {

namespace {

Mail::Letter awaitLetter(Mail& mail)
{
    for (;;) {
        if (auto letter = mail.receive())
            return *letter;
    }
}

// Changes a byte of everything that is sent.
class DamagingProcess : public LoneProcess {
public:
    std::size_t count() const override { return 2; }
    void send(std::size_t, const char* bytes, std::size_t size, bool) override
    {
        sent_ = std::string(bytes, size);
        sent_[place % size] ^= 1;
    }
    std::optional<Arrival> arrival() override
    {
        return sent_.empty() ? std::nullopt : std::optional<Arrival>({1, sent_.size(), true});
    }
    void receive(const Arrival& arrival, char* bytes) override
    {
        sent_.copy(bytes, arrival.size);
        sent_.clear();
    }

    std::size_t place = 0;

private:
    std::string sent_;
};

} // namespace

TEST(Mail, ComesWholeAndInOrderHoweverItIsCut)
{
    const std::vector<std::string> messages = {"a", "", std::string(1000, 'b'), "last"};
    for (const std::size_t mostBytes : {1, 2, 7, 8, 9, 999, 1008, 100'000}) {
        std::vector<std::string> received;
        runAsProcesses(3, [&](Processes& processes) {
            Mail mail(processes, mostBytes);
            if (processes.number() != 0) {
                for (const std::string& message : messages)
                    mail.send(0, std::to_string(processes.number()) + message);
                return;
            }
            std::vector<std::string> of[3];
            for (std::size_t count = 2 * messages.size(); count > 0; --count) {
                const Mail::Letter letter = awaitLetter(mail);
                EXPECT_EQ(letter.message.substr(0, 1), std::to_string(letter.from));
                of[letter.from].push_back(letter.message.substr(1));
            }
            EXPECT_EQ(of[1], messages) << mostBytes;
            EXPECT_EQ(of[2], messages) << mostBytes;
        });
    }
}

TEST(Mail, ComesToTheProcessItselfToo)
{
    LoneProcess process;
    Mail mail(process);
    mail.send(0, "one");
    mail.send(0, "two");

    EXPECT_EQ(mail.receive()->message, "one");
    EXPECT_EQ(mail.receive()->message, "two");
    EXPECT_FALSE(mail.receive());
}

TEST(Mail, IsRefusedWhereItWasDamaged)
{
    DamagingProcess process;
    Mail mail(process);
    for (std::size_t place = 0; place < 15; ++place) {
        process.place = place;
        mail.send(1, "message");
        EXPECT_THROW(mail.receive(), BrokenBytes) << place;
    }
}

} // namespace tests
} // namespace casetable
