#include "casetable/explaining/Explain.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <stdexcept>
#include <string_view>

#include "casetable/explaining/MarkedPath.h"
#include "casetable/system/Printable.h"
#include "crawler/CrawlerBasicImporterParser.h"
#include "crawler/private/PathReading.h"
#include "host/AuxFileInfoInterface.h"

namespace casetable {

namespace {

using Patterns = std::vector<MetadataPattern>;

// What the module itself reads from the path. All else here puts that into words.
struct ModulesReading {
    ModulesReading(const std::string& path, const Patterns& patterns)
    {
        CrawlerBasicImporterParser parser;
        parser.appendRawFilePath(path);
        try {
            parser.applyMetadataPatternList(patterns);
        } catch (const std::out_of_range&) {
            stopsImport = true;
        }
        values = parser.metadataInfoList(path);
        isMatched = parser.crawlerFilePathList().front()->isMatched();
    }

    std::vector<MetadataInfo> values; // Of the markers before the one that failed.
    bool isMatched = false;
    bool stopsImport = false; // Such a path makes the module throw.
};

// Why the path is not matched.
struct Reason {
    std::string what; // Half a sentence.
    std::string rule; // Sentences with the rule behind it.
};

// A marker as on the command line.
std::string shown(const MetadataPattern& pattern)
{
    return (pattern.valueType == MetadataPattern::NumberValue ? "-n " : "-s ") +
           printable(pattern.pattern);
}

// The first `bytes` of `text`, and the rest of the UTF-8 character that they may end in.
std::string_view wholeCharacters(std::string_view text, std::size_t bytes)
{
    while (bytes < text.size() && (static_cast<unsigned char>(text[bytes]) & 0xc0) == 0x80)
        ++bytes;
    return text.substr(0, bytes);
}

class PathExplanation {
public:
    PathExplanation(const std::string& path, const Patterns& patterns, bool inColour)
        : path_(path), patterns_(patterns), reading_(path, patterns),
          positions_(reading::markerPositions(path, patterns)), marked_(path, places(), inColour)
    {
    }

    Explanation explanation() const
    {
        Explanation explanation = {reading_.isMatched, marked_.text() + "\n"};
        for (std::size_t k = 0; k < patterns_.size(); ++k)
            explanation.text += line(k) + "\n";
        if (reading_.isMatched) {
            explanation.text += "matched\n";
        } else {
            const Reason reason = whyNotMatched();
            explanation.text += "not matched: " + reason.what + "\n  " + reason.rule + "\n";
        }
        return explanation;
    }

private:
    // All markers are found before any value is read.
    bool allFound() const { return positions_.size() == patterns_.size(); }

    bool isLast(std::size_t k) const { return k + 1 == patterns_.size(); }

    // From the marker to the next, or to the end of the path. Only if all are found.
    std::string_view segment(std::size_t k) const
    {
        const std::size_t end = isLast(k) ? path_.size() : positions_[k + 1];
        return std::string_view(path_).substr(positions_[k], end - positions_[k]);
    }

    // Where a marker that is not found stands nevertheless: in front of the place where its search
    // starts. npos if it does not stand there either.
    std::size_t earlierPosition(std::size_t k) const
    {
        return k == 0 ? std::string::npos : path_.rfind(patterns_[k].pattern, positions_[k - 1]);
    }

    // Where the marks begin and end: those of the markers that stand in the path, and of their
    // values.
    std::set<std::size_t> places() const
    {
        std::set<std::size_t> places;
        for (std::size_t k = 0; k <= positions_.size() && k < patterns_.size(); ++k) {
            const std::size_t position = k < positions_.size() ? positions_[k] : earlierPosition(k);
            if (position == std::string::npos)
                continue;
            const std::size_t end = position + patterns_[k].pattern.size();
            places.insert({position, end});
            if (k < reading_.values.size())
                places.insert(end + reading_.values[k].valueLength);
        }
        return places;
    }

    std::string marks(std::size_t position, std::size_t markerLength, std::size_t valueLength) const
    {
        const std::size_t value = position + markerLength;
        return marked_.marks(position, value, value + valueLength);
    }

    // What became of a marker, with marks to stand under it and its value in the path.
    std::string line(std::size_t k) const
    {
        const std::string name = shown(patterns_[k]) + ": ";
        const std::size_t markerLength = patterns_[k].pattern.size();
        if (k < reading_.values.size()) {
            const MetadataInfo& info = reading_.values[k];
            return marks(info.patternPosition, markerLength, info.valueLength) + name +
                   quoted(info.value) + ", " + valueEnd(k);
        }
        if (k < positions_.size()) {
            const bool failed = allFound() && k == reading_.values.size();
            return marks(positions_[k], markerLength, 0) + name +
                   (failed ? "no value" : "found, not read");
        }
        if (k > positions_.size())
            return name + "not searched for";
        if (earlierPosition(k) == std::string::npos)
            return name + "not found";
        return marks(earlierPosition(k), markerLength, 0) + name + "stands only here";
    }

    // Where the value ended, and why, if that may surprise.
    std::string valueEnd(std::size_t k) const
    {
        const std::size_t end = patterns_[k].pattern.size() + reading_.values[k].valueLength;
        const std::string_view rest = segment(k).substr(end);
        const bool isNumber = patterns_[k].valueType == MetadataPattern::NumberValue;
        std::string text = isLast(k) ? "up to the end" : "up to the next marker";
        if (!rest.empty() && reading::isSeparator(rest[0]))
            text = std::string("up to the ") + rest[0];
        else if (!rest.empty())
            text = isNumber ? numberEnd(reading_.values[k].value, rest)
                            : "the extension " + quoted(rest) + " is left off";
        else if (!isNumber && reading::lengthWithoutExtensions(segment(k)) == 0)
            text += "; an extension is kept where nothing stands before it";

        double number = 0;
        if (isNumber && !reading::convertsToNumber(reading_.values[k].value, number))
            text += "; it converts to no number, so its cell holds no value";
        return text;
    }

    // Why the number ended in front of `rest`, which does not begin with a separator.
    static std::string numberEnd(const std::string& value, std::string_view rest)
    {
        const bool hasExponent = std::any_of(value.begin(), value.end(), reading::isExponentLetter);
        if (rest[0] == '.' && !hasExponent && value.find('.') == std::string::npos)
            return "a point without digits behind it is left off";
        if (!hasExponent && reading::isExponentLetter(rest[0]))
            return "up to " + quoted(rest.substr(0, 1)) +
                   ", which begins no exponent without digits";
        return "up to " + quoted(wholeCharacters(rest, 1));
    }

    Reason whyNotMatched() const
    {
        if (!allFound())
            return whyNotFound(positions_.size());
        const std::size_t k = reading_.values.size();
        const std::string name = shown(patterns_[k]);
        const std::string_view segment = this->segment(k);
        const std::size_t markerLength = patterns_[k].pattern.size();
        if (segment.size() < markerLength)
            return {"the next marker, " + shown(patterns_[k + 1]) + ", begins within " + name,
                    reading_.stopsImport
                        ? "What is left of the marker is all extension: such a path stops the "
                          "whole import."
                        : "A value ends where the next marker begins."};
        if (segment.size() == markerLength && !isLast(k))
            return {"the next marker, " + shown(patterns_[k + 1]) + ", begins right behind " + name,
                    "A value ends where the next marker begins."};
        return patterns_[k].valueType == MetadataPattern::NumberValue
                   ? whyNoNumber(segment.substr(markerLength), name)
                   : whyNoText(segment, patterns_[k].pattern, name);
    }

    Reason whyNotFound(std::size_t k) const
    {
        const std::string name = shown(patterns_[k]);
        if (earlierPosition(k) == std::string::npos)
            return {name + " does not stand in the path",
                    "Every marker must be found before any value is read."};
        return {name + " stands only in front of the place where its search starts",
                "Each marker is searched for behind the first byte of the one before."};
    }

    static Reason whyNoNumber(std::string_view behind, const std::string& name)
    {
        const char* const rule = "A number is an optional sign and digits; a point may stand among "
                                 "them or before them.";
        if (behind.empty())
            return {"the path ends with " + name, rule};
        std::size_t wrong = reading::isSign(behind[0]) ? 1 : 0;
        if (wrong < behind.size() && behind[wrong] == '.')
            ++wrong;
        return {quoted(wholeCharacters(behind, std::min(wrong + 1, behind.size()))) + " behind " +
                    name + " begins no number",
                rule};
    }

    static Reason whyNoText(std::string_view segment, const std::string& marker,
                            const std::string& name)
    {
        const std::string rule = "One character at the end of a segment is not taken as a value; "
                                 "a segment ends\n  at the next marker or with the path.";
        const std::size_t markerLength = marker.size();
        const std::size_t length = reading::lengthWithoutExtensions(segment);
        const std::string extension = "the extension " + quoted(segment.substr(length));
        if (segment.size() == markerLength)
            return {"the path ends with " + name,
                    "A text that no / or \\ ends has two characters or more."};
        if (length < markerLength)
            return {extension + " begins within " + name,
                    "Extensions at the end of a segment are left off."};
        if (length == markerLength)
            return {"only " + extension + " stands behind " + name,
                    "Extensions at the end of a segment are left off."};
        const std::string left =
            length < segment.size() ? ", as " + extension + " is left off" : "";
        const std::string_view only = segment.substr(markerLength, 1);
        return {"only " + quoted(only) + " stands behind " + name + left,
                reading::isDigit(only[0])
                    ? rule + " A number may be one digit:\n  -n " + printable(marker)
                    : rule};
    }

    const std::string& path_;
    const Patterns& patterns_;
    const ModulesReading reading_;
    const std::vector<std::size_t> positions_; // As far as the markers are found.
    const MarkedPath marked_;
};

} // namespace

Explanation explain(const std::string& path, const std::vector<MetadataPattern>& patterns,
                    bool inColour)
{
    return PathExplanation(path, patterns, inColour).explanation();
}

} // namespace casetable
