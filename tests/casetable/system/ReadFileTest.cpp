#include "casetable/system/ReadFile.h"

#include <cstddef>
#include <string>
#include <system_error>

#include <gtest/gtest.h>

#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

// Why it cannot be read; nothing where it can.
std::error_code refusal(const std::string& path, std::size_t mostBytes)
{
    try {
        readFile(path, mostBytes);
        return {};
    } catch (const std::system_error& failure) {
        return failure.code();
    }
}

} // namespace

TEST(ReadFile, GivesAllBytes)
{
    const TemporaryTree tree({"empty"});
    std::string bytes;
    for (int i = 0; i < 1000 * 256; ++i)
        bytes += static_cast<char>(i % 256);
    tree.file("bytes", bytes);

    EXPECT_EQ(readFile(tree.path("bytes"), bytes.size()), bytes);
    EXPECT_EQ(readFile(tree.path("empty"), 0), "");
}

TEST(ReadFile, RefusesMoreBytesThanAllowed)
{
    const TemporaryTree tree;
    tree.file("file", "1234");

    EXPECT_EQ(refusal(tree.path("file"), 3), std::errc::file_too_large);
    EXPECT_EQ(refusal(tree.path("file"), 4), std::error_code());
    EXPECT_EQ(refusal("/dev/zero", 1000000), std::errc::file_too_large);
}

TEST(ReadFile, SaysWhyTheSystemRefuses)
{
    const TemporaryTree tree({"folder/", "file"});

    EXPECT_EQ(refusal(tree.path("missing"), 9), std::errc::no_such_file_or_directory);
    EXPECT_EQ(refusal(tree.path("folder"), 9), std::errc::is_a_directory);
    EXPECT_EQ(refusal(tree.path("file/x"), 9), std::errc::not_a_directory);
    EXPECT_EQ(refusal("", 9), std::errc::no_such_file_or_directory);
}

} // namespace tests
} // namespace casetable
