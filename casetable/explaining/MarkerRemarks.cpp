#include "casetable/explaining/MarkerRemarks.h"

#include <cctype>
#include <string_view>
#include <utility>

#include "casetable/explaining/Unmatched.h"
#include "crawler/private/PathReading.h"

namespace casetable {

namespace {

bool endsEarly(const std::string& path, const std::vector<MetadataInfo>& infos, std::size_t k,
               MetadataPattern::ValueType type)
{
    const std::size_t end = infos[k].valuePosition + infos[k].valueLength;
    if (end == path.size())
        return false;
    if (type == MetadataPattern::NumberValue)
        return (path[end] == ',' || path[end] == '.' || path[end] == 'p') &&
               reading::digitAt(std::string_view(path), end + 1);
    return path[end] == '.' && k + 1 < infos.size() && end < infos[k + 1].patternPosition;
}

// "run-01" may be run 01, while "AoA-2.5" is an angle: where a column has other signs too, it is
// one of numbers.
bool hasSignBehindWord(const std::string& path, const MetadataInfo& info)
{
    const bool isBehindWord =
        info.valuePosition > 0 &&
        std::isalnum(static_cast<unsigned char>(path[info.valuePosition - 1])) != 0;
    return isBehindWord && path[info.valuePosition] == '-';
}

} // namespace

void MarkerRemarks::Doubtful::add(const std::string& path, const MetadataInfo& info)
{
    if (!files.add(path))
        return;
    value = info.value;
    const std::size_t end = info.valuePosition + info.valueLength;
    behind = end < path.size() ? path[end] : '\0';
}

void MarkerRemarks::Doubtful::merge(Doubtful&& other)
{
    if (!files.merge(std::move(other.files)))
        return;
    value = std::move(other.value);
    behind = other.behind;
}

void MarkerRemarks::Doubtful::write(ByteWriter& writer) const
{
    files.write(writer);
    writer.text(value);
    writer.byte(static_cast<unsigned char>(behind));
}

void MarkerRemarks::Doubtful::read(ByteReader& reader)
{
    files.read(reader);
    value = reader.text();
    behind = static_cast<char>(reader.byte());
}

std::string MarkerRemarks::Doubtful::inFiles() const
{
    return "in " + std::to_string(files.count) + (files.count == 1 ? " file" : " files") +
           ", as in " + files.example + ", which gives '" + value + "'";
}

MarkerRemarks::MarkerRemarks(const std::vector<MetadataPattern>& patterns)
    : patterns_(&patterns), values_(patterns.size())
{
}

void MarkerRemarks::count(const std::string& path, const std::vector<MetadataInfo>& infos)
{
    ++files_;
    for (std::size_t k = 0; k < infos.size(); ++k) {
        const MetadataPattern::ValueType type = (*patterns_)[k].valueType;
        if (endsEarly(path, infos, k, type))
            values_[k].endEarly.add(path, infos[k]);
        if (type == MetadataPattern::NumberValue && hasSignBehindWord(path, infos[k]))
            values_[k].negative.add(path, infos[k]);
    }
}

void MarkerRemarks::merge(MarkerRemarks&& other)
{
    files_ += other.files_;
    for (std::size_t k = 0; k < values_.size(); ++k) {
        values_[k].endEarly.merge(std::move(other.values_[k].endEarly));
        values_[k].negative.merge(std::move(other.values_[k].negative));
    }
}

void MarkerRemarks::write(ByteWriter& writer) const
{
    writer.number(files_);
    for (const Values& of : values_) {
        of.endEarly.write(writer);
        of.negative.write(writer);
    }
}

void MarkerRemarks::read(ByteReader& reader)
{
    files_ = reader.number();
    for (Values& of : values_) {
        of.endEarly.read(reader);
        of.negative.read(reader);
    }
}

std::vector<std::string> MarkerRemarks::lines() const
{
    std::vector<std::string> lines;
    for (std::size_t k = 0; k < values_.size(); ++k) {
        const std::string name = "'" + (*patterns_)[k].pattern + "'";
        const Values& of = values_[k];
        if (of.endEarly.files.count > 0)
            lines.push_back("the value of " + name + " ends at a '" + of.endEarly.behind + "' " +
                            of.endEarly.inFiles() + otherReading);
        if (of.negative.files.count > 0 && of.negative.files.count == files_)
            lines.push_back("the '-' behind " + name + " is taken for a sign " +
                            of.negative.inFiles() + otherReading);
    }
    return lines;
}

} // namespace casetable
