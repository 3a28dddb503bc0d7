#include "casetable/writing/Formats.h"

#include <set>
#include <string>

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

TEST(Formats, AreFoundByNameAndByEveryEnding)
{
    ASSERT_FALSE(formats().empty());
    for (const Format& format : formats()) {
        SCOPED_TRACE(format.name);
        EXPECT_EQ(formatNamed(format.name), &format);
        ASSERT_FALSE(format.endings.empty());
        for (const std::string ending : format.endings)
            EXPECT_EQ(formatOfEnding("folder.x/file" + ending), &format) << ending;
    }
}

TEST(Formats, HaveNamesAndEndingsOfTheirOwn)
{
    std::set<std::string> texts = {"auto"}; // It stands for no format.
    for (const Format& format : formats()) {
        EXPECT_TRUE(texts.insert(format.name).second) << format.name;
        for (const char* const ending : format.endings)
            EXPECT_TRUE(texts.insert(ending).second) << ending;
    }
}

TEST(Formats, AreNoneForOtherNamesAndEndings)
{
    for (const char* const name : {"", "auto", "CSV", "csv ", ".csv", "xml"})
        EXPECT_EQ(formatNamed(name), nullptr) << name;
    for (const char* const file : {"", "csv", "a.csv/b", "a.csv.gz", "a."})
        EXPECT_EQ(formatOfEnding(file), nullptr) << file;
}

} // namespace tests
} // namespace casetable
