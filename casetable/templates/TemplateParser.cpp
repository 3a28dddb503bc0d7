#include "casetable/templates/TemplateParser.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <unordered_map>
#include <utility>

#include <boost/make_shared.hpp>

#include "casetable/templates/Matcher.h"
#include "host/AuxFileInfoInterface.h"

namespace casetable {

namespace {

// What a file is, and its case. Where its values stand is asked of the template again: that is
// wanted of few files, and quicker than to keep it of all.
class File final : public AuxFileInfoInterface {
public:
    explicit File(const std::string& path) : path_(path) {}

    std::string filePath() const override { return path_; }
    bool isMatched() const override { return isMatched_; }
    void setCaseIndex(std::size_t index) override { caseIndex_ = index; }
    std::size_t caseIndex() const override { return caseIndex_; }
    std::string label() const override { return std::string(); }
    Type type() const override { return auxFileType(path_); }

    const std::string& path() const { return path_; }
    void setMatched(bool isMatched) { isMatched_ = isMatched; }

private:
    const std::string path_;
    std::size_t caseIndex_ = 0;
    bool isMatched_ = false;
};

using FilePointer = boost::shared_ptr<File>;

bool comesBefore(const FilePointer& left, const FilePointer& right)
{
    return left->path() < right->path();
}

bool haveSamePath(const FilePointer& left, const FilePointer& right)
{
    return left->path() == right->path();
}

// The values of a case are one text, which is its key too: the length of each in four bytes, then
// all of them.
using Length = std::uint32_t;

Length lengthAt(const std::string& values, std::size_t index)
{
    Length length = 0;
    std::memcpy(&length, values.data() + index * sizeof(Length), sizeof(Length));
    return length;
}

void setLength(std::string& values, std::size_t index, std::size_t length)
{
    if (length > std::numeric_limits<Length>::max())
        throw std::length_error("a value is too long");
    const auto stored = static_cast<Length>(length);
    std::memcpy(&values[index * sizeof(Length)], &stored, sizeof(Length));
}

bool isSame(const std::vector<MetadataPattern>& left, const std::vector<MetadataPattern>& right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const MetadataPattern& a, const MetadataPattern& b) {
                          return a.pattern == b.pattern && a.valueType == b.valueType;
                      });
}

// Where the nearest value in front of a column ends; 0 where there is none.
std::size_t endOfValueBefore(const Span& column, const std::vector<Span>& columns)
{
    std::size_t nearest = 0;
    for (const Span& other : columns) {
        const std::size_t end = other.begin + other.length;
        if (&other != &column && !other.isLeftOut && end <= column.begin)
            nearest = std::max(nearest, end);
    }
    return nearest;
}

} // namespace

struct TemplateParser::Impl {
    explicit Impl(const TemplateList& own) : templates(own), spans(own.columns().size())
    {
        matchers.reserve(templates.templates().size());
        for (const Template& pathTemplate : templates.templates())
            matchers.emplace_back(pathTemplate);
    }

    // In byte order of path. A walk appends them in that order, and then there is nothing to sort.
    const std::vector<FilePointer>& sortedFiles()
    {
        if (!isSorted) {
            std::stable_sort(files.begin(), files.end(), comesBefore);
            // Of equal paths the last stays.
            files.erase(files.begin(),
                        std::unique(files.rbegin(), files.rend(), haveSamePath).base());
            isSorted = true;
        }
        return files;
    }

    // Null where there is none.
    FilePointer find(const std::string& path)
    {
        const std::vector<FilePointer>& sorted = sortedFiles();
        const auto file = std::lower_bound(
            sorted.begin(), sorted.end(), path,
            [](const FilePointer& left, const std::string& right) { return left->path() < right; });
        return file != sorted.end() && (*file)->path() == path ? *file : nullptr;
    }

    // The index of the first template that fits the path, or their number.
    std::size_t firstThatFits(const std::string& path)
    {
        std::size_t index = 0;
        while (index < matchers.size() && !matchers[index].match(path))
            ++index;
        return index;
    }

    // Of the path that the template at `index` has just matched.
    void readValues(const std::string& path, std::size_t index)
    {
        const std::vector<std::size_t>& columns = templates.columnIndices(index);
        std::fill(spans.begin(), spans.end(), Span());
        for (std::size_t k = 0; k < columns.size(); ++k)
            spans[columns[k]] = matchers[index].columns()[k];
        values.resize(spans.size() * sizeof(Length));
        for (std::size_t k = 0; k < spans.size(); ++k) {
            setLength(values, k, spans[k].length);
            values.append(path, spans[k].begin, spans[k].length);
        }
    }

    // Neighbours mostly share their case, and then one comparison finds it.
    std::size_t caseOfValues()
    {
        if (!cases.empty() && *cases[lastCase] == values)
            return lastCase;
        const auto entry = casesByValues.emplace(values, cases.size());
        if (entry.second)
            cases.push_back(&entry.first->first);
        lastCase = entry.first->second;
        return lastCase;
    }

    const TemplateList templates;
    std::vector<Matcher> matchers;
    std::vector<FilePointer> files;
    bool isSorted = true;
    bool isApplied = false;

    std::unordered_map<std::string, std::size_t> casesByValues;
    std::vector<const std::string*> cases; // The keys, by case index.
    std::size_t lastCase = 0;

    // Of the path at work; kept for their memory alone.
    std::vector<Span> spans;
    std::string values;
};

TemplateParser::TemplateParser(const TemplateList& templates) : impl_(new Impl(templates)) {}

TemplateParser::~TemplateParser() = default;

void TemplateParser::appendRawFilePath(const std::string& path)
{
    auto& files = impl_->files;
    files.push_back(boost::make_shared<File>(path));
    impl_->isSorted =
        impl_->isSorted && (files.size() < 2 || comesBefore(files[files.size() - 2], files.back()));
}

void TemplateParser::clearFilePaths()
{
    impl_->files.clear();
    impl_->isSorted = true;
}

void TemplateParser::applyMetadataPatternList(const std::vector<MetadataPattern>& patterns)
{
    if (!patterns.empty() && !isSame(patterns, impl_->templates.patterns()))
        throw std::invalid_argument("the patterns are not the columns of the templates");
    impl_->isApplied = !patterns.empty();
    impl_->cases.clear();
    impl_->casesByValues.clear();
    if (!impl_->isApplied)
        return;

    for (const FilePointer& file : impl_->sortedFiles())
        file->setMatched(false);
    for (const FilePointer& file : impl_->sortedFiles()) {
        const std::size_t index = impl_->firstThatFits(file->path());
        if (index == impl_->matchers.size())
            continue;
        impl_->readValues(file->path(), index);
        file->setCaseIndex(impl_->caseOfValues());
        file->setMatched(true);
    }
}

std::vector<MetadataInfo> TemplateParser::metadataInfoList(const std::string& name) const
{
    const FilePointer file = impl_->find(name);
    if (!impl_->isApplied || !file || !file->isMatched())
        return {};
    const std::size_t index = impl_->firstThatFits(name);
    const std::vector<Span> spans = impl_->matchers[index].columnSpans(name);
    const std::vector<std::size_t>& columns = impl_->templates.columnIndices(index);
    std::vector<MetadataInfo> infos(impl_->templates.columns().size());
    for (std::size_t k = 0; k < columns.size(); ++k) {
        MetadataInfo& info = infos[columns[k]];
        info.patternPosition = endOfValueBefore(spans[k], spans);
        info.valuePosition = spans[k].begin;
        info.valueLength = spans[k].length;
        info.value.assign(name, spans[k].begin, spans[k].length);
    }
    return infos;
}

std::size_t TemplateParser::numDefinedCases() const
{
    return impl_->cases.size();
}

std::string TemplateParser::caseMetadataSValue(std::size_t caseIndex,
                                               std::size_t metadataIndex) const
{
    const std::string& values = *impl_->cases[caseIndex];
    std::size_t begin = impl_->spans.size() * sizeof(Length);
    for (std::size_t k = 0; k < metadataIndex; ++k)
        begin += lengthAt(values, k);
    return values.substr(begin, lengthAt(values, metadataIndex));
}

std::vector<boost::shared_ptr<AuxFileInfoInterface>> TemplateParser::crawlerFilePathList() const
{
    const std::vector<FilePointer>& files = impl_->sortedFiles();
    return {files.begin(), files.end()};
}

} // namespace casetable
