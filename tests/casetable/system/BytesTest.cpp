#include "casetable/system/Bytes.h"

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

TEST(Bytes, AreReadAsTheyWereWritten)
{
    ByteWriter writer;
    writer.heading("thing", 7);
    writer.byte(255);
    writer.flag(true);
    writer.number32(UINT32_MAX - 1);
    writer.number(UINT64_MAX - 2);
    writer.text(std::string("a\0\n", 3));
    writer.text("");
    const std::string bytes = writer.take();

    ByteReader reader(bytes);
    reader.heading("thing", 7);
    EXPECT_EQ(reader.byte(), 255);
    EXPECT_TRUE(reader.flag());
    EXPECT_EQ(reader.number32(), UINT32_MAX - 1);
    EXPECT_EQ(reader.number(), UINT64_MAX - 2);
    EXPECT_EQ(reader.text(), std::string("a\0\n", 3));
    EXPECT_EQ(reader.text(), "");
    reader.end();
}

TEST(Bytes, HaveTheLowestByteOfANumberFirst)
{
    ByteWriter writer;
    writer.number32(0x01020304);
    EXPECT_EQ(writer.take(), "\x04\x03\x02\x01");
}

TEST(Bytes, AreRefusedWhereTheyEndTooSoonOrTooLate)
{
    ByteWriter writer;
    writer.text("text");
    const std::string bytes = writer.take();
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        const std::string cut = bytes.substr(0, size);
        ByteReader reader(cut);
        EXPECT_THROW(reader.text(), BrokenBytes) << size;
    }
    ByteReader reader(bytes);
    EXPECT_THROW(reader.end(), BrokenBytes);
    EXPECT_THROW(ByteReader("").byte(), BrokenBytes);
    EXPECT_THROW(ByteReader("abc").number32(), BrokenBytes);
    EXPECT_THROW(ByteReader("abcdefg").number(), BrokenBytes);
}

TEST(Bytes, AreRefusedWhereACountPromisesMoreThanThereIs)
{
    ByteWriter writer;
    writer.number(UINT64_MAX);
    writer.text("");
    const std::string bytes = writer.take();
    for (const std::size_t each : {1, 8, 100})
        EXPECT_THROW(ByteReader(bytes).count(each), BrokenBytes);
    EXPECT_THROW(ByteReader(bytes).text(), BrokenBytes);
}

TEST(Bytes, AreRefusedUnderAnotherHeading)
{
    ByteWriter writer;
    writer.heading("thing", 7);
    const std::string bytes = writer.take();
    EXPECT_THROW(ByteReader(bytes).heading("thin", 7), BrokenBytes);
    EXPECT_THROW(ByteReader(bytes).heading("thing", 8), BrokenBytes);
}

TEST(Bytes, AreRefusedWhereAFlagIsNone)
{
    EXPECT_THROW(ByteReader("\x02").flag(), BrokenBytes);
}

} // namespace tests
} // namespace casetable
