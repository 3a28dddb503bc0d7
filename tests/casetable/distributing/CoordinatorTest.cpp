#include "casetable/distributing/Coordinator.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/system/Bytes.h"
#include "casetable/system/Console.h"
#include "casetable/system/Interrupt.h"

namespace casetable {
namespace tests {

namespace {

class CoordinatorOfFour : public testing::Test {
protected:
    CoordinatorOfFour() { source_.root = "root"; }

    void ready(std::size_t from) { readyWith(from, sights_, "machine"); }

    void readyWith(std::size_t from, const std::vector<Sight>& sights,
                   const std::string& machine = "other")
    {
        coordinator_.ready(from, {"1", machine, 5, 4, hashOf(sights)}, Begin(), send_);
    }

    void listed(std::size_t from, std::size_t piece, std::vector<std::string> warnings = {})
    {
        Listed listed;
        listed.piece = piece;
        listed.report.warnings = std::move(warnings);
        listed.report.hiddenLeftOut = 10;
        coordinator_.listed(from, listed, send_);
    }

    void failed(std::size_t piece, const std::string& message)
    {
        Failed failed;
        failed.piece = piece;
        failed.message = message;
        failed.machine = "machine";
        coordinator_.failed(failed);
    }

    // What was given since the last call, as "process:piece", with "-" where there are no more.
    std::string given() { return std::exchange(given_, ""); }

    Source source_;
    Console console_;
    Coordinator coordinator_{3, source_, console_};
    const std::vector<Sight> sights_ = {{"root", 7}, {"root/a", 8}};

private:
    std::string given_;
    const Coordinator::Send send_ = [this](std::size_t to, const std::string& message) {
        ByteReader reader(message);
        const auto kind = static_cast<MessageKind>(reader.byte());
        if (kind == MessageKind::ShowSights)
            given_ += std::to_string(to) + ":show ";
        if (kind != MessageKind::Piece)
            return;
        const std::optional<std::size_t> piece = readPiece(reader);
        given_ += std::to_string(to) + ':' + (piece ? std::to_string(*piece) : "-") + ' ';
    };
};

std::string messageOf(const std::function<void()>& act)
{
    try {
        act();
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "";
}

} // namespace

TEST_F(CoordinatorOfFour, HandsOutPiecesInOrderToWhoeverIsReady)
{
    ready(2);
    EXPECT_EQ(given(), "") << "nobody knows yet what this process has seen";
    ready(0);
    EXPECT_EQ(given(), "0:0 2:1 ");
    ready(1);
    listed(2, 1);
    EXPECT_EQ(given(), "1:2 2:3 ");
    listed(2, 3);
    listed(0, 0);
    EXPECT_EQ(given(), "2:- 0:- ");
    EXPECT_FALSE(coordinator_.isComplete());
    listed(1, 2);
    EXPECT_TRUE(coordinator_.isComplete());
    EXPECT_EQ(coordinator_.hiddenLeftOut(), 40u);
}

TEST_F(CoordinatorOfFour, TellsWarningsInTheOrderOfThePieces)
{
    testing::internal::CaptureStderr();
    ready(0);
    ready(1);
    listed(1, 1, {"c"});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    testing::internal::CaptureStderr();
    listed(0, 0, {"a", "b"});
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "casetable: warning: a\ncasetable: warning: b\ncasetable: warning: c\n");
}

TEST_F(CoordinatorOfFour, FailsWithTheFirstPieceThatFailed)
{
    ready(0);
    ready(1);
    ready(2);
    failed(2, "late");
    listed(0, 0);
    EXPECT_EQ(given(), "0:0 1:1 2:2 0:- ") << "nothing behind a failure is needed";
    EXPECT_EQ(messageOf([this] { failed(1, "early"); }), "early (on machine)");
}

TEST_F(CoordinatorOfFour, FailsOnlyWhenAllInFrontIsKnown)
{
    ready(0);
    ready(1);
    failed(1, "late");
    EXPECT_EQ(messageOf([this] { listed(0, 0); }), "late (on machine)");
}

TEST_F(CoordinatorOfFour, IsInterruptedWithAnyProcess)
{
    Failed failed;
    failed.signal = 15;
    EXPECT_THROW(coordinator_.failed(failed), Interrupted);
}

TEST_F(CoordinatorOfFour, RefusesAnotherProgramAndOtherOptions)
{
    ready(0);
    const auto refusal = [this](const Ready& other) {
        return messageOf(
            [&] { coordinator_.ready(1, other, Begin(), [](std::size_t, std::string) {}); });
    };
    const std::uint64_t same = hashOf(sights_);

    EXPECT_EQ(refusal({"1", "other", 5, 5, same}),
              "the processes on machine and other were not given the same options");
    EXPECT_EQ(refusal({"1", "other", 6, 5, same + 1}),
              "the process on other was not given the same options or files of templates as that "
              "on machine");
    EXPECT_EQ(refusal({"2", "other", 5, 4, same}),
              "casetable-mpi is of version 2 on other, and of version 1 on machine");
    EXPECT_EQ(refusal({"1", "other", 5, 4, same}), "");
}

TEST_F(CoordinatorOfFour, AsksTheFirstProcessThatSeesSomethingElseForIt)
{
    readyWith(2, {{"root", 7}, {"root/b", 8}});
    ready(0);
    readyWith(1, {{"root", 6}});
    EXPECT_EQ(given(), "0:0 2:show ") << "and all else waits for the answer";
}

TEST_F(CoordinatorOfFour, RefusesAProcessThatSeesSomethingElse)
{
    ready(0);
    const auto refusal = [this](const std::vector<Sight>& seen) {
        return messageOf([&] { coordinator_.sights({"other", seen}, sights_); });
    };
    const std::string reason = ": it does not look the same on other as on machine; all processes "
                               "must see the same files";

    EXPECT_EQ(refusal({{"root", 6}, {"root/a", 8}}), "root" + reason);
    EXPECT_EQ(refusal({{"root", 7}, {"root/a", 9}}), "root/a" + reason);
    EXPECT_EQ(refusal({{"root", 7}, {"root/b", 8}}), "root/a" + reason);
    EXPECT_EQ(refusal({{"root", 7}}), "root/a" + reason);
    EXPECT_EQ(refusal({{"root", 7}, {"root/a", 8}, {"root/b", 9}}), "root/b" + reason);
}

TEST_F(CoordinatorOfFour, IsToldMuchInFewBytes)
{
    const std::vector<Sight> many(1000, {std::string(100, 'x'), 1});
    const Ready ready = {"1.10.3", "machine", 5, 4, hashOf(many)};
    EXPECT_LT(casetable::messageOf(MessageKind::Ready, ready).size(), 200U);
}

TEST(HashOfSights, DiffersWhereAnyOfThemDoes)
{
    const std::vector<Sight> sights = {{"a", 1}, {"b", 2}};
    const std::vector<std::vector<Sight>> others = {
        {}, {{"a", 1}}, {{"b", 2}, {"a", 1}}, {{"a", 1}, {"b", 3}}, {{"a", 1}, {"c", 2}}};
    for (const std::vector<Sight>& other : others)
        EXPECT_NE(hashOf(other), hashOf(sights));
    EXPECT_EQ(hashOf(std::vector<Sight>(sights)), hashOf(sights));
}

} // namespace tests
} // namespace casetable
