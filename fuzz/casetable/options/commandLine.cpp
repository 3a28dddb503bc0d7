// A command line, its arguments divided by NULs, compared with a plain reading of it. Requests for
// help and for the version are left out, since they print.

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "casetable/options/Options.h"
#include "casetable/system/ExitCode.h"
#include "fuzz/Input.h"

namespace {

/// The wrong usages are all alike here.
struct WrongUsage {};

bool holdsControlCharacter(const std::string& text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte < 0x20 || byte == 0x7f)
            return true;
        if (byte == 0xc2 && i + 1 < text.size()) {
            const auto next = static_cast<unsigned char>(text[i + 1]);
            if (next >= 0x80 && next <= 0x9f)
                return true;
        }
    }
    return false;
}

/// Reads the arguments one by one from the left.
class PlainReading {
public:
    explicit PlainReading(const fuzz::Texts& arguments) : arguments_(arguments)
    {
        while (next_ < arguments_.size()) {
            const std::string argument = arguments_[next_++];
            if (onlyRoots_)
                takeRoot(argument);
            else if (argument == "--")
                onlyRoots_ = true;
            else if (looksLikeAnOption(argument, 2))
                takeLong(argument);
            else if (looksLikeAnOption(argument, 1))
                takeShort(argument);
            else
                takeRoot(argument);
        }
        const bool listed = options.list.has_value();
        if (roots_ > 1 || (roots_ == 0 && !listed && !options.explain) ||
            (roots_ == 1 && (listed || options.root.empty())))
            throw WrongUsage();
        if ((listed && (options.follow || options.keepGoing)) || (options.nullSeparated && !listed))
            throw WrongUsage();
        if (listed)
            options.selection.hidden = true;
        if (options.suggest) {
            if (!options.patterns.empty() || !options.identifiers.empty() || format_ || files_ ||
                unmatched_ || options.explain)
                throw WrongUsage();
            return;
        }
        if (options.patterns.empty() || (files_ && unmatched_) ||
            (unmatched_ && !options.identifiers.empty()))
            throw WrongUsage();
        if (options.explain) {
            if (files_ || unmatched_ || format_ || listed || !options.identifiers.empty())
                throw WrongUsage();
            leaveOutRoot(*options.explain);
        }
        if (options.format == casetable::Format::Auto && options.output)
            guessFormat(*options.output);
        options.rows = files_       ? casetable::Rows::Files
                       : unmatched_ ? casetable::Rows::Unmatched
                                    : casetable::Rows::Cases;
    }

    casetable::Options options = plainOptions();

private:
    static casetable::Options plainOptions()
    {
        casetable::Options options;
        options.selection.hidden = false;
        return options;
    }

    /// So many hyphens and then a character that a name may begin with.
    static bool looksLikeAnOption(const std::string& argument, std::size_t hyphens)
    {
        if (argument.size() <= hyphens || argument.substr(0, hyphens) != std::string(hyphens, '-'))
            return false;
        const char first = argument[hyphens];
        if (hyphens == 1 && first >= '1' && first <= '9')
            return false; // A negative number.
        return first != '-' && first != '!' && first != ' ' && first != '\n';
    }

    void takeRoot(const std::string& argument)
    {
        options.root = argument;
        ++roots_;
    }

    std::string nextArgument()
    {
        if (next_ == arguments_.size())
            throw WrongUsage();
        return arguments_[next_++];
    }

    static const std::map<std::string, char>& letters()
    {
        static const std::map<std::string, char> letters = {
            {"--string", 's'},    {"--number", 'n'},     {"--aux", 'a'},       {"--format", 'f'},
            {"--output", 'o'},    {"--follow", 'L'},     {"--quiet", 'q'},     {"--files", 'F'},
            {"--unmatched", 'U'}, {"--keep-going", 'K'}, {"--from-list", 'l'}, {"--null", '0'},
            {"--exclude", 'E'},   {"--hidden", 'H'},     {"--max-depth", 'd'}, {"--explain", 'X'},
            {"--suggest", 'S'}};
        return letters;
    }

    void takeLong(const std::string& argument)
    {
        const std::size_t equals = argument.find('=');
        const auto letter = letters().find(argument.substr(0, equals));
        if (letter == letters().end())
            throw WrongUsage();
        const bool isFlag = std::string("LqFUK0HS").find(letter->second) != std::string::npos;
        if (isFlag && equals != std::string::npos)
            throw WrongUsage();
        if (equals == std::string::npos)
            take(letter->second, [this] { return nextArgument(); });
        else
            take(letter->second, [&] { return argument.substr(equals + 1); });
    }

    void takeShort(const std::string& argument)
    {
        if (letters().count('-' + argument.substr(0, argument.find('='))) != 0)
            throw WrongUsage();
        std::size_t at = 1;
        while (at < argument.size()) {
            const char letter = argument[at++];
            if (std::string("snafoLqEd0H").find(letter) == std::string::npos)
                throw WrongUsage();
            take(letter, [&] {
                const std::string rest = argument.substr(at);
                at = argument.size();
                return rest.empty() ? nextArgument() : rest;
            });
        }
    }

    template <class Value> void take(char letter, Value value)
    {
        switch (letter) {
        case 's':
            takeMarker(value(), MetadataPattern::StringValue);
            break;
        case 'n':
            takeMarker(value(), MetadataPattern::NumberValue);
            break;
        case 'a':
            takeIdentifier(value());
            break;
        case 'f':
            takeFormat(value());
            break;
        case 'o':
            takeOutput(value());
            break;
        case 'L':
            options.follow = true;
            break;
        case 'q':
            options.quiet = true;
            break;
        case 'K':
            options.keepGoing = true;
            break;
        case 'l':
            options.list = value();
            if (options.list->empty())
                throw WrongUsage();
            break;
        case '0':
            options.nullSeparated = true;
            break;
        case 'E':
            takeGlob(value());
            break;
        case 'H':
            options.selection.hidden = true;
            break;
        case 'd':
            takeDepth(value());
            break;
        case 'F':
            files_ = true;
            break;
        case 'S':
            options.suggest = true;
            break;
        case 'X':
            options.explain = value();
            break;
        default:
            unmatched_ = true;
        }
    }

    void takeMarker(const std::string& marker, MetadataPattern::ValueType type)
    {
        if (marker.empty())
            throw WrongUsage();
        options.patterns.emplace_back(marker, type);
    }

    void takeIdentifier(const std::string& text)
    {
        const std::size_t divider = text.find_last_of('=');
        if (divider == std::string::npos || divider + 1 == text.size() ||
            holdsControlCharacter(text.substr(divider)))
            throw WrongUsage();
        options.identifiers.push_back({text.substr(0, divider), text.substr(divider + 1)});
    }

    void takeFormat(const std::string& name)
    {
        format_ = true;
        if (name == "auto")
            options.format = casetable::Format::Auto;
        else if (name == "table")
            options.format = casetable::Format::Table;
        else if (name == "csv")
            options.format = casetable::Format::Csv;
        else if (name == "tsv")
            options.format = casetable::Format::Tsv;
        else if (name == "json")
            options.format = casetable::Format::Json;
        else if (name == "vtt")
            options.format = casetable::Format::Vtt;
        else
            throw WrongUsage();
    }

    void guessFormat(const std::string& file)
    {
        static const std::map<std::string, casetable::Format> formats = {
            {".csv", casetable::Format::Csv},
            {".tsv", casetable::Format::Tsv},
            {".json", casetable::Format::Json},
            {".vtt", casetable::Format::Vtt},
            {".txt", casetable::Format::Table}};
        for (const auto& format : formats) {
            const std::string& ending = format.first;
            bool ends = file.size() >= ending.size();
            for (std::size_t i = 0; ends && i < ending.size(); ++i) {
                const char c = file[file.size() - ending.size() + i];
                ends = c == ending[i] || (ending[i] != '.' && c == ending[i] - 'a' + 'A');
            }
            if (ends)
                options.format = format.second;
        }
    }

    // Where the components of a path begin but those that are empty or ".".
    static std::vector<std::pair<std::size_t, std::string>> components(const std::string& path)
    {
        std::vector<std::pair<std::size_t, std::string>> found;
        std::string component;
        for (std::size_t i = 0; i <= path.size(); ++i) {
            if (i < path.size() && path[i] != '/') {
                component += path[i];
                continue;
            }
            if (!component.empty() && component != ".")
                found.emplace_back(i - component.size(), component);
            component.clear();
        }
        return found;
    }

    void leaveOutRoot(std::string& path)
    {
        if (path.empty())
            throw WrongUsage();
        if (options.root.empty() || (options.root[0] == '/') != (path[0] == '/'))
            return;
        const auto root = components(options.root);
        const auto whole = components(path);
        for (std::size_t i = 0; i < root.size(); ++i) {
            if (i == whole.size() || whole[i].second != root[i].second)
                return;
        }
        if (root.size() < whole.size())
            path = path.substr(whole[root.size()].first);
        else if (path[path.size() - 1] == '/')
            throw WrongUsage();
    }

    void takeOutput(const std::string& file)
    {
        if (file.empty())
            throw WrongUsage();
        options.output = file;
        if (file == "-")
            options.output.reset();
    }

    void takeGlob(const std::string& glob)
    {
        std::string rest = glob;
        if (!rest.empty() && rest.back() == '/')
            rest.pop_back();
        if (!rest.empty() && rest.front() == '/')
            rest.erase(0, 1);
        bool namesAnEntry = false;
        for (;;) {
            const std::size_t slash = rest.find('/');
            const std::string component = rest.substr(0, slash);
            if (component.empty())
                throw WrongUsage();
            bool escapes = false;
            for (const char letter : component)
                escapes = letter == '\\' && !escapes;
            if (escapes)
                throw WrongUsage();
            namesAnEntry = namesAnEntry || component != ".";
            if (slash == std::string::npos)
                break;
            rest.erase(0, slash + 1);
        }
        if (!namesAnEntry)
            throw WrongUsage();
        options.selection.excluded.emplace_back(glob);
    }

    /// Counts up, as long as the number has room.
    void takeDepth(const std::string& text)
    {
        const std::size_t most = ~std::size_t{0};
        std::size_t depth = 0;
        for (const char letter : text) {
            if (letter < '0' || letter > '9')
                throw WrongUsage();
            const auto digit = static_cast<std::size_t>(letter - '0');
            if (depth > (most - digit) / 10)
                throw WrongUsage();
            depth = depth * 10 + digit;
        }
        if (depth == 0)
            throw WrongUsage();
        options.selection.maxDepth = depth;
    }

    const fuzz::Texts& arguments_;
    std::size_t next_ = 0;
    bool onlyRoots_ = false;
    int roots_ = 0;
    bool format_ = false;
    bool files_ = false;
    bool unmatched_ = false;
};

std::string shown(const casetable::Options& options)
{
    std::string text =
        "root " + fuzz::shown(options.root) + " patterns " + fuzz::shown(options.patterns) + " aux";
    for (const AuxFileIdentifier& identifier : options.identifiers)
        text += " " + fuzz::shown(identifier.syntaxName) + "=" + fuzz::shown(identifier.tag);
    text += " list " + (options.list ? fuzz::shown(*options.list) : "none") + " null " +
            std::to_string(options.nullSeparated) + " hidden " +
            std::to_string(options.selection.hidden) + " depth " +
            std::to_string(options.selection.maxDepth) + " exclude";
    for (const casetable::Glob& glob : options.selection.excluded)
        text += " " + fuzz::shown(glob.text());
    return text + " format " + std::to_string(static_cast<int>(options.format)) + " output " +
           (options.output ? fuzz::shown(*options.output) : "none") + " explain " +
           (options.explain ? fuzz::shown(*options.explain) : "none") + " rows " +
           std::to_string(static_cast<int>(options.rows)) + " keepGoing " +
           std::to_string(options.keepGoing) + " follow " + std::to_string(options.follow) +
           " quiet " + std::to_string(options.quiet) + " suggest " +
           std::to_string(options.suggest);
}

/// Asks for something to be printed, or may do so; it may also be the value of an option, but that
/// is no loss.
bool isLeftOut(const std::string& argument)
{
    if (argument.substr(0, 3) == "--h" || argument.substr(0, 3) == "--v")
        return true;
    return argument.size() > 1 && argument[0] == '-' && argument[1] != '-' &&
           argument.find('h') != std::string::npos;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    // Every NUL ends an argument; what follows the last is one too.
    fuzz::Texts arguments(1);
    for (std::size_t i = 0; i < size; ++i) {
        if (bytes[i] == 0)
            arguments.emplace_back();
        else
            arguments.back() += static_cast<char>(bytes[i]);
    }
    std::vector<const char*> argv = {"casetable"};
    for (const std::string& argument : arguments) {
        if (isLeftOut(argument))
            return -1;
        argv.push_back(argument.c_str());
    }

    std::string seen;
    try {
        const std::optional<casetable::Options> options =
            casetable::parseOptions(static_cast<int>(argv.size()), argv.data());
        seen = options ? shown(*options) : "something was printed";
    } catch (const casetable::Failure& failure) {
        seen = failure.code != casetable::ExitCode::WrongUsage ? "another exit code"
               : failure.what()[0] == '\0'                     ? "no message"
                                                               : "wrong usage";
    }
    std::string expected = "wrong usage";
    try {
        expected = shown(PlainReading(arguments).options);
    } catch (const WrongUsage&) {
    }
    fuzz::expectSame("what the command line says", seen, expected, fuzz::shown(arguments));
    return 0;
}
