#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTest>

#include "tests/casetable/support/Csv.h"
#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"
#include "window/model/CasesModel.h"
#include "window/model/CommandText.h"
#include "window/model/Session.h"

namespace casetable {
namespace tests {

namespace {

using Texts = std::vector<std::string>;

class RandomCampaign {
public:
    explicit RandomCampaign(std::mt19937& random) : random_(random) {}

    Texts files()
    {
        Texts files;
        for (std::size_t n = 3 + choose(25); n > 0; --n)
            files.push_back(oneOf({"wingA", "wingB", ".hidden", "é"}) + "/" +
                            oneOf({"T1", "T2", "T10", "T2.5", "Tx", "T 3"}) + "/" +
                            oneOf({"flow.vtu", "solver.log", "run_1.dat", "run_2.dat", "it's"}));
        return files;
    }

    Setup setup(const std::string& root)
    {
        Setup setup;
        setup.root = root;
        setup.hidden = choose(3) == 0;
        setup.keepGoing = choose(4) == 0;
        if (choose(5) == 0)
            setup.maxDepth = 1 + choose(4);
        if (choose(4) == 0)
            setup.excluded = {oneOf({"*.dat", "wingB/", "T1", "nothing"})};
        if (choose(2) == 0) {
            for (std::size_t n = 1 + choose(2); n > 0; --n)
                setup.templates.push_back(oneOf(
                    {"{wing}/T{T:number}/*", "wing{wing:word}/**", "**/run_{run:digits}.dat",
                     "{wing}/T{T:number}[.{rest}]/*", "{a}/{b}/{c}", "@{x}", "{name,[^/]*}/**"}));
        } else {
            setup.by = Setup::By::Markers;
            for (std::size_t n = 1 + choose(2); n > 0; --n)
                setup.markers.push_back({oneOf({"wing", "T", "run_", "/"}), choose(2) == 0});
        }
        for (std::size_t n = choose(3); n > 0; --n)
            setup.auxRows.push_back({oneOf({"*.log", "*.vtu", "solver.*", "*.nothing", "*"}),
                                     oneOf({"log", "field", ""})});
        for (std::size_t n = choose(3); n > 0; --n)
            setup.sort.push_back(oneOf({"T", "-T", "files", "-case", "wing", "missing"}));
        return setup;
    }

private:
    std::size_t choose(std::size_t count) { return random_() % count; }
    std::string oneOf(const Texts& texts) { return texts[choose(texts.size())]; }

    std::mt19937& random_;
};

std::vector<Record> tableOf(const CasesModel& model)
{
    std::vector<Record> rows(1);
    for (int column = 0; column < model.columnCount(); ++column)
        rows[0].push_back(
            model.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString().toStdString());
    for (int row = 0; row < model.rowCount(); ++row) {
        rows.emplace_back();
        for (int column = 0; column < model.columnCount(); ++column)
            rows.back().push_back(model.cell(row, column));
    }
    return rows;
}

} // namespace

TEST(RandomSetups, GiveTheTableOfTheCommandThatIsShown)
{
    std::mt19937 random(2026);
    int withCases = 0;
    int failed = 0;
    for (int i = 0; i < 200; ++i) {
        RandomCampaign campaign(random);
        const TemporaryTree tree(campaign.files());
        Session session(2);
        const CasesModel model(session);
        session.open(campaign.setup(tree.path()));
        ASSERT_TRUE(QTest::qWaitFor([&session] { return session.isIdle(); }, 20000));

        Texts words = commandWords(commandLine(session.effective()));
        words.erase(words.begin());
        words.insert(words.begin(), {"--format", "csv", "--quiet"});
        const Outcome outcome = run(tree, words);
        if (session.problem() || !session.reading())
            continue;
        if (!session.matching() || !session.matching()->import) {
            EXPECT_EQ(outcome.exitCode, 3) << commandLine(session.effective());
            ++failed;
            continue;
        }
        ASSERT_TRUE(outcome.exitCode == 0 || outcome.exitCode == 1) << outcome;
        EXPECT_EQ(tableOf(model), parseCsv(outcome.output)) << commandLine(session.effective());
        withCases += outcome.exitCode == 0;
    }
    EXPECT_GT(withCases, 80);
    EXPECT_LT(failed, 40);
}

TEST(RandomSetups, AreSavedAsTheProgramWritesThem)
{
    std::mt19937 random(2027);
    const TemporaryTree target;
    int saved = 0;
    for (int i = 0; i < 90; ++i) {
        RandomCampaign campaign(random);
        const TemporaryTree tree(campaign.files());
        Session session(2);
        const CasesModel model(session);
        session.open(campaign.setup(tree.path()));
        ASSERT_TRUE(QTest::qWaitFor([&session] { return session.isIdle(); }, 20000));
        const bool hasTable = session.matching() && session.matching()->import;
        const std::size_t columns = hasTable ? session.matching()->table()->patterns.size() : 0;
        if (session.problem() || columns < 2)
            continue;

        casetable::Setup setup = session.effective();
        SavedRows rows;
        std::string option;
        if (i % 3 == 0) {
            rows.rows = Rows::Files;
            option = "--files";
        } else if (i % 3 == 1) {
            rows.rows = Rows::Unmatched;
            option = "--unmatched";
            setup.sort.clear();
            setup.auxRows.clear();
        } else {
            rows = {Rows::Missing, {columns - 1, 0}};
            const std::vector<std::string> header = tableOf(model)[0];
            option = "--missing=" + header[columns] + "," + header[1];
            setup.auxRows.clear();
        }
        session.save(target.path("saved.csv"), rows);
        ASSERT_TRUE(QTest::qWaitFor([&session] { return session.isIdle(); }, 20000));

        const auto runWith = [&](const casetable::Setup& of) {
            Texts words = arguments(of);
            words.insert(words.begin(), {option, "--output", target.path("expected.csv")});
            return run(tree, words);
        };
        Outcome outcome = runWith(setup);
        if (outcome.exitCode == 2) { // It sorts by a column that such rows do not have.
            setup.sort.clear();
            outcome = runWith(setup);
        }
        EXPECT_LE(outcome.exitCode, 1) << outcome;
        EXPECT_EQ(target.content("saved.csv"), target.content("expected.csv"))
            << option << ' ' << commandLine(session.effective());
        ++saved;
    }
    EXPECT_GT(saved, 30);
}

} // namespace tests
} // namespace casetable
