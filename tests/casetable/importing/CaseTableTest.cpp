#include "casetable/importing/CaseTable.h"

#include <set>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

namespace casetable {
namespace tests {

namespace {

using Texts = std::vector<std::string>;

// Of two cases, the second with a file under each of two tags.
class FewFiles : public AuxFileCollectionInterface {
public:
    bool isEmpty() const override { return false; }
    std::set<std::string> tags() const override { return {"log", "data"}; }
    std::size_t indexCount() const override { return 2; }

    Texts filePaths(std::size_t index, const std::string& tag) const override
    {
        EXPECT_LT(index, indexCount());
        return index == 1 ? Texts{tag + ".x"} : Texts();
    }
};

CaseTable tableOfThree()
{
    CaseTable table;
    table.patterns = {{"T", MetadataPattern::NumberValue}, {"P", MetadataPattern::StringValue}};
    table.cells = {"1", "a", "2", "b", "3", "c"};
    table.fileCounts = {1, 1, 4};
    table.tags = {"data", "log"};
    return table;
}

} // namespace

TEST(CaseTable, GivesTheCellsOfACase)
{
    const CaseTable table = tableOfThree();
    Texts cells = {"0"};

    table.appendCells(0, cells);
    table.appendCells(2, cells);

    EXPECT_EQ(cells, Texts({"0", "1", "a", "3", "c"}));
}

TEST(CaseTable, GivesTheFilesOfACaseUnderATag)
{
    CaseTable table = tableOfThree();
    table.auxFiles = boost::make_shared<FewFiles>();

    EXPECT_EQ(table.auxFilesOf(0, 0), Texts());
    EXPECT_EQ(table.auxFilesOf(1, 0), Texts({"data.x"}));
    EXPECT_EQ(table.auxFilesOf(1, 1), Texts({"log.x"}));
    EXPECT_EQ(table.auxFilesOf(2, 1), Texts()) << "behind the last case that has files";
}

TEST(CaseTable, HasEachTagOfTheIdentifiersOnce)
{
    EXPECT_EQ(tagsOf({{"*.log", "log"}, {"*.dat", "data"}, {"*.txt", "log"}}),
              Texts({"log", "data"}));
}

TEST(CaseTable, HasNoFilesWhereNoneWereAskedFor)
{
    EXPECT_EQ(tableOfThree().auxFilesOf(1, 0), Texts());
}

} // namespace tests
} // namespace casetable
