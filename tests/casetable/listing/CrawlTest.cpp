#include "casetable/listing/Crawl.h"

#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "crawler/FolderCrawler.h"
#include "host/ExceptionBase.h"
#include "tests/support/MemoryFile.h"

namespace casetable {
namespace tests {

namespace {

using Texts = std::vector<std::string>;

// What a walk came to, and what it asked.
struct Outcome {
    Texts files;
    std::string error;
    doubles::Calls calls;
};

Outcome byCrawl(const boost::shared_ptr<FileInfoInterface const>& root, const doubles::CallLog& log)
{
    Outcome outcome;
    CrawlVisitor visitor;
    visitor.file = [&outcome](std::string_view path) { outcome.files.emplace_back(path); };
    outcome.error = crawl(root, visitor);
    outcome.calls = log.calls();
    return outcome;
}

Outcome byTheModule(const boost::shared_ptr<FileInfoInterface const>& root,
                    const doubles::CallLog& log)
{
    FolderCrawler crawler(root);
    crawler.run();
    const auto& files = crawler.result().files;
    return {Texts(files.begin(), files.end()), crawler.result().errorString.toStdString(),
            log.calls()};
}

// Makes the same tree from the same seed, with what may go wrong in it.
class RandomTree {
public:
    explicit RandomTree(unsigned seed) : random_(seed), root_(folder("r", 0)) {}

    const doubles::MemoryFilePtr& root() const { return root_; }
    const doubles::CallLog& log() const { return *log_; }

private:
    bool happens() { return random_() % 40 == 0; }

    doubles::MemoryFilePtr folder(const std::string& path, int depth)
    {
        std::vector<doubles::MemoryFilePtr> children;
        for (auto count = depth < 4 ? random_() % 5 : 0; count > 0; --count) {
            const std::string child =
                path + "/" + std::string(1, "zab"[random_() % 3]) + std::to_string(children.size());
            children.push_back(random_() % 2 == 0 ? folder(child, depth + 1)
                                                  : doubles::memoryFile(child));
            children.back()->log = log_;
        }
        auto made = doubles::memoryFolder(path, std::move(children));
        made->log = log_;
        made->directory = !happens();
        made->readable = !happens();
        made->present = !happens();
        if (happens()) {
            const std::string failing = happens() ? "isReadable" : "entries()";
            made->hook = [failing](const std::string& call) {
                if (call.find(failing) != std::string::npos)
                    throw ortelo::ExceptionBase(call + " \xc3\xa4 failed", false);
            };
        }
        return made;
    }

    const doubles::CallLogPtr log_ = std::make_shared<doubles::CallLog>();
    std::mt19937 random_;
    const doubles::MemoryFilePtr root_;
};

} // namespace

TEST(Crawl, AsksAndFindsAndFailsAsTheModuleDoes)
{
    std::size_t failed = 0;
    std::size_t finished = 0;
    for (unsigned seed = 0; seed < 3000; ++seed) {
        const RandomTree ours(seed);
        const RandomTree theirs(seed);

        const Outcome outcome = byCrawl(ours.root(), ours.log());
        const Outcome expected = byTheModule(theirs.root(), theirs.log());

        EXPECT_EQ(outcome.files, expected.files) << seed;
        EXPECT_EQ(outcome.error, expected.error) << seed;
        EXPECT_EQ(outcome.calls, expected.calls) << seed;
        ++(outcome.error.empty() ? finished : failed);
    }
    EXPECT_GT(failed, 500u);
    EXPECT_GT(finished, 500u);
}

TEST(Crawl, TellsOfEachFolderBeforeItsFiles)
{
    const auto root =
        doubles::memoryFolder("r", {doubles::memoryFile("r/x"),
                                    doubles::memoryFolder("r/f", {doubles::memoryFile("r/f/y")})});
    Texts met;
    CrawlVisitor visitor;
    visitor.folder = [&met](const std::string& path) { met.push_back("in " + path); };
    visitor.file = [&met](std::string_view path) { met.emplace_back(path); };

    EXPECT_EQ(crawl(root, visitor), "");
    EXPECT_EQ(met, Texts({"in r", "x", "in r/f", "f/y"}));
}

TEST(Crawl, HandsOnWhatIsNoFailureOfTheHost)
{
    const auto root = doubles::memoryFolder("r", {doubles::memoryFile("r/x")});
    CrawlVisitor visitor;
    visitor.file = [](std::string_view) { throw std::runtime_error("enough"); };

    EXPECT_THROW(crawl(root, visitor), std::runtime_error);
}

} // namespace tests
} // namespace casetable
