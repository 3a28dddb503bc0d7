#include "casetable/options/OptionTable.h"

#include <set>
#include <string>

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

TEST(OptionTable, FindsEveryRowByItsIdNameAndLetter)
{
    for (const Option& option : optionTable()) {
        SCOPED_TRACE(option.name);
        EXPECT_EQ(&optionOf(option.id), &option);
        EXPECT_EQ(optionNamed(option.name), &option);
        if (option.letter != '\0') {
            EXPECT_EQ(optionOfLetter(option.letter), &option);
        }
    }
}

TEST(OptionTable, HasARowForEveryId)
{
    std::set<OptionId> ids;
    for (const Option& option : optionTable())
        ids.insert(option.id);
    EXPECT_EQ(ids.size(), static_cast<std::size_t>(OptionId::Root) + 1); // The last of them.
}

TEST(OptionTable, FindsNothingElse)
{
    for (const char* const name : {"", "--", "string", "--String", "--strin", "-s", "root"})
        EXPECT_EQ(optionNamed(name), nullptr) << name;
    for (const char letter : {'\0', '-', 'x', 'S', '\xff'})
        EXPECT_EQ(optionOfLetter(letter), nullptr) << letter;
}

TEST(OptionTable, SaysOfEveryRowWhatItIs)
{
    for (const Option& option : optionTable()) {
        SCOPED_TRACE(option.name);
        EXPECT_FALSE(option.help.empty());
        EXPECT_EQ(option.help.find('\n'), std::string::npos);
        EXPECT_EQ(option.words.empty(), option.completion != Completion::Words);
        if (option.id != OptionId::Root) {
            EXPECT_EQ(std::string(option.name).substr(0, 2), "--");
            ASSERT_FALSE(option.manual.empty());
            EXPECT_EQ(option.manual.back(), '\n');
        }
    }
}

TEST(OptionTable, PutsWordsAsAChoice)
{
    EXPECT_EQ(choice({"a"}), "a");
    EXPECT_EQ(choice({"a", "b"}), "a or b");
    EXPECT_EQ(choice({"a", "b", "c"}), "a, b or c");
}

} // namespace tests
} // namespace casetable
