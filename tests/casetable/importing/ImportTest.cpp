#include "casetable/importing/Import.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/listing/FileSystem.h"
#include "casetable/listing/Walk.h"
#include "casetable/system/Console.h"
#include "casetable/system/ExitCode.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

class ImportOfATree : public testing::Test {
protected:
    ImportOfATree()
    {
        console_.beQuiet();
        tree_.file("results/T1/a.log");
        tree_.file("results/T2/b.dat");
    }

    Import import(const std::string& marker, const std::vector<AuxFileIdentifier>& identifiers)
    {
        return Import(walk(fileSystem_, tree_.path("results"), console_),
                      Reading({{marker, MetadataPattern::NumberValue}}), identifiers);
    }

    const TemporaryTree tree_;
    Console console_;
    const std::shared_ptr<FileSystem> fileSystem_ = std::make_shared<FileSystem>();
};

} // namespace

TEST_F(ImportOfATree, HasAuxiliaryFilesOnlyWhereTheyAreAskedForAndThereAreCases)
{
    EXPECT_FALSE(import("T", {}).table().auxFiles);
    EXPECT_FALSE(import("none", {{"*.log", "log"}}).table().auxFiles);
    const auto files = import("T", {{"*.log", "log"}}).table().auxFiles;
    ASSERT_TRUE(files);
    EXPECT_EQ(files->filePaths(0, "log"), std::vector<std::string>({"T1/a.log"}));
}

TEST_F(ImportOfATree, LooksAtIdentifiersOnlyWhereThereAreCases)
{
    EXPECT_FALSE(import("none", {{"[", "log"}}).importer().hasCases());
    try {
        import("T", {{"*.dat", "data"}, {"[", "log"}, { "{", "log" }});
        ADD_FAILURE() << "no failure";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code, ExitCode::ImportFailed);
        EXPECT_STREQ(failure.what(),
                     "--aux '[=log': Invalid pattern. It selects none of the matched files.");
    }
}

} // namespace tests
} // namespace casetable
