#include <cctype>
#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/casetable/support/Csv.h"
#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

// A folder and a file for every byte that a name can hold: alone in the file's name, where the
// system has no meaning of its own for it, and between letters in the folder's, where it is read as
// a value. Paths stand in the order of the numbers, so rows do too.
class CasetableBytes : public testing::Test {
protected:
    struct Sample {
        std::string byte;
        std::string path;
        std::string number;
        std::string value; // What "-s _" reads.
    };

    CasetableBytes()
    {
        for (int value = 1; value < 256; ++value) {
            if (value == '/')
                continue;
            Sample sample;
            sample.byte = std::string(1, static_cast<char>(value));
            sample.number = std::to_string(1000 + value);
            const std::string file = sample.byte == "." ? ".." + sample.byte : sample.byte;
            sample.path = "T" + sample.number + "_ab" + sample.byte + "cd/" + file;
            // A backslash ends a value as a slash does.
            sample.value = sample.byte == "\\" ? "ab" : "ab" + sample.byte + "cd";
            tree_.file("results/" + sample.path);
            samples_.push_back(sample);
        }
    }

    std::string outputAs(const std::string& format, const std::string& rows) const
    {
        Arguments arguments = {"-n", "T", "-s", "_", "-f", format, "--hidden", "results"};
        if (!rows.empty())
            arguments.push_back(rows);
        const Outcome outcome = run(tree_, arguments);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        return outcome.output;
    }

    const TemporaryTree tree_;
    std::vector<Sample> samples_;
};

bool isAscii(const std::string& byte)
{
    return static_cast<unsigned char>(byte[0]) < 0x80;
}

// A byte above ASCII is not UTF-8 where it stands alone.
std::string inJson(std::string text, const std::string& byte)
{
    if (isAscii(byte))
        return text;
    for (std::size_t at = 0; (at = text.find(byte, at)) != std::string::npos; at += 3)
        text.replace(at, 1, "\xef\xbf\xbd");
    return text;
}

int hexDigit(char digit)
{
    return std::isdigit(static_cast<unsigned char>(digit)) != 0 ? digit - '0' : digit - 'a' + 10;
}

// Reads the escapes of the table back. A lone backslash is a backslash.
std::string unescaped(const std::string& text)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char kind = text[i] == '\\' && i + 1 < text.size() ? text[i + 1] : '\0';
        if (kind == 'x' && i + 3 < text.size()) {
            bytes += static_cast<char>(hexDigit(text[i + 2]) * 16 + hexDigit(text[i + 3]));
            i += 3;
        } else if (kind == 'n' || kind == 'r' || kind == 't') {
            bytes += kind == 'n' ? '\n' : kind == 'r' ? '\r' : '\t';
            i += 1;
        } else {
            bytes += text[i];
        }
    }
    return bytes;
}

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = text.find('\n', begin);
        lines.push_back(text.substr(begin, end - begin));
        begin = end == std::string::npos ? text.size() : end + 1;
    }
    return lines;
}

} // namespace

TEST_F(CasetableBytes, AreAllButTwo)
{
    EXPECT_EQ(samples_.size(), 254u);
    EXPECT_EQ(tree_.names("results").size(), 254u);
}

TEST_F(CasetableBytes, ComeBackFromCsv)
{
    std::vector<Record> cases = {{"case", "T", "_", "files"}};
    std::vector<Record> files = {{"path", "case", "T", "_"}};
    for (std::size_t i = 0; i < samples_.size(); ++i) {
        const Sample& sample = samples_[i];
        cases.push_back({std::to_string(i), sample.number, sample.value, "1"});
        files.push_back({sample.path, std::to_string(i), sample.number, sample.value});
    }

    EXPECT_EQ(parseCsv(outputAs("csv", "")), cases);
    EXPECT_EQ(parseCsv(outputAs("csv", "--files")), files);
}

TEST_F(CasetableBytes, ComeBackFromCsvAsFilesUnderATag)
{
    const Outcome outcome = run(tree_, {"-n", "T", "-a", "T*=all", "-f", "csv", "-H", "results"});

    EXPECT_EQ(outcome.exitCode, 0) << outcome;
    const std::vector<Record> records = parseCsv(outcome.output);
    ASSERT_EQ(records.size(), samples_.size() + 1);
    for (std::size_t i = 0; i < samples_.size(); ++i) {
        SCOPED_TRACE(testing::PrintToString(samples_[i].path));
        EXPECT_EQ(records[i + 1],
                  Record({std::to_string(i), samples_[i].number, samples_[i].path, "1", "1"}));
    }
}

TEST_F(CasetableBytes, ComeBackFromCsvAmongTheUnmatchedFiles)
{
    const Outcome outcome = run(tree_, {"-n", "none", "--unmatched", "-f", "csv", "-H", "results"});

    std::vector<Record> expected = {{"path", "marker", "reason"}};
    for (const Sample& sample : samples_)
        expected.push_back({sample.path, "none", "not found"});
    EXPECT_EQ(outcome.exitCode, 1) << outcome;
    EXPECT_EQ(parseCsv(outcome.output), expected);
}

TEST_F(CasetableBytes, ComeBackFromJsonAsFarAsTheyAreText)
{
    const auto cases = nlohmann::json::parse(outputAs("json", ""))["cases"];
    const auto files = nlohmann::json::parse(outputAs("json", "--files"))["files"];

    ASSERT_EQ(cases.size(), samples_.size());
    ASSERT_EQ(files.size(), samples_.size());
    for (std::size_t i = 0; i < samples_.size(); ++i) {
        const Sample& sample = samples_[i];
        SCOPED_TRACE(testing::PrintToString(sample.byte));
        EXPECT_EQ(cases[i]["values"]["T"], std::stoi(sample.number));
        EXPECT_EQ(cases[i]["values"]["_"], inJson(sample.value, sample.byte));
        EXPECT_EQ(files[i]["values"]["_"], inJson(sample.value, sample.byte));
        EXPECT_EQ(files[i]["path"], inJson(sample.path, sample.byte));
    }
}

TEST_F(CasetableBytes, ComeBackFromTheEscapesOfTheTable)
{
    const std::vector<std::string> lines = linesOf(outputAs("table", "--files"));

    ASSERT_EQ(lines.size(), samples_.size() + 1) << "a line for each file, whatever its name";
    for (std::size_t i = 0; i < samples_.size(); ++i) {
        const Sample& sample = samples_[i];
        SCOPED_TRACE(testing::PrintToString(sample.byte));
        const std::string line = lines[i + 1];
        for (const char c : line)
            EXPECT_TRUE(c >= ' ' && c <= '~') << testing::PrintToString(line);
        const std::string text = unescaped(line);
        EXPECT_EQ(text.compare(0, sample.path.size() + 1, sample.path + " "), 0) << line;
        EXPECT_EQ(text.substr(text.rfind(sample.number + "  ")),
                  sample.number + "  " + sample.value)
            << line;
    }
}

} // namespace tests
} // namespace casetable
