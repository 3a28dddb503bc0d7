#include "casetable/explaining/Tally.h"

#include <cstdint>
#include <type_traits>
#include <utility>

#include "casetable/importing/Reading.h"

namespace casetable {

namespace {

const std::uint32_t version = 1; // Of the form in which tallies are written.

} // namespace

void Tally::ByMarkers::countMatched(const std::string& path,
                                    const MetadataInfoProviderInterface& values)
{
    matched.count(path, values.metadataInfoList(path));
    failures.countMatched(path);
}

void Tally::ByMarkers::merge(ByMarkers&& other)
{
    matched.merge(std::move(other.matched));
    failures.merge(std::move(other.failures));
}

void Tally::ByMarkers::write(ByteWriter& writer) const
{
    writer.heading("tally of markers", version);
    matched.write(writer);
    failures.write(writer);
}

void Tally::ByMarkers::read(ByteReader& reader)
{
    reader.heading("tally of markers", version);
    matched.read(reader);
    failures.read(reader);
}

std::string Tally::ByMarkers::whyNoneMatched(const std::string& root) const
{
    const std::string reason = failures.likelyReason(root);
    return failures.summary() + (reason.empty() ? "" : "; " + reason);
}

std::string Tally::ByMarkers::whySomeFailed(const std::string& root) const
{
    return failures.likelyReason(root);
}

void Tally::ByTemplates::countMatched(const std::string& path,
                                      const MetadataInfoProviderInterface& /*values*/)
{
    matched.count(path);
}

void Tally::ByTemplates::merge(ByTemplates&& other)
{
    matched.merge(std::move(other.matched));
    unfitted.merge(std::move(other.unfitted));
}

void Tally::ByTemplates::write(ByteWriter& writer) const
{
    writer.heading("tally of templates", version);
    matched.write(writer);
    unfitted.write(writer);
}

void Tally::ByTemplates::read(ByteReader& reader)
{
    reader.heading("tally of templates", version);
    matched.read(reader);
    unfitted.read(reader);
}

std::string Tally::ByTemplates::whyNoneMatched(const std::string& /*root*/) const
{
    return unfitted.summary();
}

std::string Tally::ByTemplates::whySomeFailed(const std::string& /*root*/) const
{
    return unfitted.summary();
}

Tally::Tally(const Reading& reading) : counts_(countsFor(reading)) {}

void Tally::countMatched(const std::string& path, const MetadataInfoProviderInterface& values)
{
    std::visit([&](auto& counts) { counts.countMatched(path, values); }, counts_);
}

void Tally::countUnmatched(const std::string& path)
{
    std::visit([&](auto& counts) { counts.countUnmatched(path); }, counts_);
}

void Tally::merge(Tally&& other)
{
    std::visit(
        [&other](auto& counts) {
            counts.merge(std::get<std::decay_t<decltype(counts)>>(std::move(other.counts_)));
        },
        counts_);
}

void Tally::write(ByteWriter& writer) const
{
    std::visit([&writer](const auto& counts) { counts.write(writer); }, counts_);
}

void Tally::read(ByteReader& reader)
{
    std::visit([&reader](auto& counts) { counts.read(reader); }, counts_);
}

std::string Tally::whyNoneMatched(const std::string& root) const
{
    return std::visit([&](const auto& counts) { return counts.whyNoneMatched(root); }, counts_);
}

std::string Tally::whySomeFailed(const std::string& root) const
{
    return std::visit([&](const auto& counts) { return counts.whySomeFailed(root); }, counts_);
}

std::vector<std::string> Tally::remarks() const
{
    return std::visit([](const auto& counts) { return counts.matched.lines(); }, counts_);
}

Tally::Counts Tally::countsFor(const Reading& reading)
{
    using Patterns = std::vector<MetadataPattern>;
    return reading.visit([](const auto& by) {
        using By = std::decay_t<decltype(by)>;
        return Counts(std::in_place_type<
                          std::conditional_t<std::is_same_v<By, Patterns>, ByMarkers, ByTemplates>>,
                      by);
    });
}

} // namespace casetable
