#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "crawler/CrawlerBasicImporterParser.h"
#include "crawler/MetadataPattern.h"
#include "host/AuxFileInfoInterface.h"

namespace {

/// No enumerator: the module hands a type on without looking at it.
constexpr AuxFileInfoInterface::Type ownType = static_cast<AuxFileInfoInterface::Type>(4000000000U);

std::vector<std::string>& askedPaths()
{
    static std::vector<std::string> paths;
    return paths;
}

} // namespace

// This program's own answer, in place of the stand-in's.
AuxFileInfoInterface::Type auxFileType(const std::string& path)
{
    askedPaths().push_back(path);
    return ownType;
}

namespace {

using Paths = std::vector<std::string>;

class OwnAuxFileType : public testing::Test {
protected:
    OwnAuxFileType() { askedPaths().clear(); }

    CrawlerBasicImporterParser parser;
};

} // namespace

TEST_F(OwnAuxFileType, IsAskedOncePerAppendedPathInTheOrderOfAppending)
{
    parser.appendRawFilePath("z/T2.dat");
    EXPECT_EQ((Paths{"z/T2.dat"}), askedPaths());

    parser.appendRawFilePath("a\\T1.png");
    EXPECT_EQ((Paths{"z/T2.dat", "a\\T1.png"}), askedPaths());
}

TEST_F(OwnAuxFileType, IsAskedAgainWhenAPathIsAppendedAgain)
{
    parser.appendRawFilePath("x");
    parser.appendRawFilePath("x");

    EXPECT_EQ((Paths{"x", "x"}), askedPaths());
    EXPECT_EQ(1U, parser.crawlerFilePathList().size());
}

TEST_F(OwnAuxFileType, IsNotAskedByAnyOtherOperation)
{
    parser.appendRawFilePath("T1.dat");
    parser.appendRawFilePath("other");
    askedPaths().clear();

    parser.applyMetadataPatternList({{"T", MetadataPattern::NumberValue}});
    parser.applyMetadataPatternList({});
    parser.metadataInfoList("T1.dat");
    for (const auto& file : parser.crawlerFilePathList())
        file->type();
    parser.clearFilePaths();

    EXPECT_EQ(Paths{}, askedPaths());
}

TEST_F(OwnAuxFileType, IsWhatEveryFileAnswersMatchedOrNot)
{
    parser.appendRawFilePath("T1.txt");
    parser.appendRawFilePath("mesh.stl");
    parser.applyMetadataPatternList({{"T", MetadataPattern::NumberValue}});

    const auto files = parser.crawlerFilePathList();

    ASSERT_EQ(2U, files.size());
    EXPECT_TRUE(files[0]->isMatched());
    EXPECT_FALSE(files[1]->isMatched());
    EXPECT_EQ(ownType, files[0]->type());
    EXPECT_EQ(ownType, files[1]->type());
}
