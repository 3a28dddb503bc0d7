// A command line, its arguments divided by NULs, compared with a plain reading of it, and with what
// the arguments that its options turn back into say. Requests for help and for the version are left
// out, since they print; so are templates but a few, whose language is another target's matter, and
// files of templates.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "casetable/options/Options.h"
#include "casetable/system/ExitCode.h"
#include "fuzz/Input.h"

namespace {

/// The wrong usages are all alike here.
struct WrongUsage {};

const char* const wrongUsage = "wrong usage";

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

/// What cannot be said without the language of templates.
struct LeftOut {};

/// Templates that are given, and their column: its name, with "#" for a number. Empty for what is
/// no template.
const std::map<std::string, std::string>& templateColumns()
{
    static const std::map<std::string, std::string> columns = {{"{a}", "a"},
                                                               {"{a:number}_x", "a#"},
                                                               {"@x{b}", "b"},
                                                               {"#[{c}]", "c"},
                                                               {" \xff{d}\n-", "d"},
                                                               {"", ""},
                                                               {"x", ""},
                                                               {"{a", ""},
                                                               {"{a}***", ""}};
    return columns;
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
            else if (argument.substr(0, 2) == "--")
                takeLong(argument);
            else if (argument.substr(0, 1) == "-" && argument != "-")
                takeShort(argument);
            else
                takeRoot(argument);
        }
        for (const auto& [column, isNumber] : isNumber_) {
            if (isNumber.size() > 1)
                throw WrongUsage();
        }
        const bool listed = options.source.list.has_value();
        if (roots_ > 1 || (roots_ == 0 && !listed && !explain_) ||
            (roots_ == 1 && (listed || options.source.root.empty())))
            throw WrongUsage();
        if ((listed && (options.source.follow || options.source.keepGoing)) ||
            (options.source.nullSeparated && !listed))
            throw WrongUsage();
        if (listed)
            options.source.selection.hidden = true;
        if (formatName.empty() && options.output)
            guessFormat(*options.output);
        if (formatName == "sqlite" && (!options.output || !missing_.empty() || !sort_.empty()))
            throw WrongUsage();
        if (suggest_) {
            options.mode = casetable::Mode::Suggest;
            if (!markers_.empty() || !templates_.empty() || !options.identifiers.empty() ||
                format_ || files_ || unmatched_ || explain_ || !missing_.empty() || !sort_.empty())
                throw WrongUsage();
            return;
        }
        if (markers_.empty() == templates_.empty() || (files_ && unmatched_) ||
            (unmatched_ && (!options.identifiers.empty() || !sort_.empty())) ||
            (!missing_.empty() && (files_ || unmatched_ || !options.identifiers.empty())))
            throw WrongUsage();
        if (explain_) {
            options.mode = casetable::Mode::Explain;
            if (files_ || unmatched_ || format_ || listed || !options.identifiers.empty() ||
                !missing_.empty() || !sort_.empty())
                throw WrongUsage();
            leaveOutRoot(options.explained);
        }
        options.reading = templates_.empty()
                              ? casetable::Reading(markers_)
                              : casetable::Reading(casetable::TemplateList(templates_));
        options.rows = files_              ? casetable::Rows::Files
                       : unmatched_        ? casetable::Rows::Unmatched
                       : !missing_.empty() ? casetable::Rows::Missing
                                           : casetable::Rows::Cases;
        takeMissing();
        takeKeys();
    }

    casetable::Options options = plainOptions(); // But for the format.
    std::string formatName;                      // Empty where none is chosen.

private:
    static casetable::Options plainOptions()
    {
        casetable::Options options;
        options.source.selection.hidden = false;
        return options;
    }

    void takeRoot(const std::string& argument)
    {
        options.source.root = argument;
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
            {"--string", 's'},  {"--number", 'n'},    {"--template", 't'},   {"--aux", 'a'},
            {"--format", 'f'},  {"--output", 'o'},    {"--follow", 'L'},     {"--quiet", 'q'},
            {"--files", 'F'},   {"--unmatched", 'U'}, {"--keep-going", 'K'}, {"--from-list", 'l'},
            {"--null", '0'},    {"--exclude", 'E'},   {"--hidden", 'H'},     {"--max-depth", 'd'},
            {"--explain", 'X'}, {"--suggest", 'S'},   {"--missing", 'M'},    {"--sort", 'O'},
            {"--jobs", 'j'}};
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
        if (equals + 1 == argument.size())
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
            if (std::string("sntafoLqEd0Hj").find(letter) == std::string::npos)
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
        case 't':
            takeTemplate(value());
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
            options.source.follow = true;
            break;
        case 'q':
            options.quiet = true;
            break;
        case 'K':
            options.source.keepGoing = true;
            break;
        case 'l':
            options.source.list = value();
            if (options.source.list->empty())
                throw WrongUsage();
            break;
        case '0':
            options.source.nullSeparated = true;
            break;
        case 'E':
            takeGlob(value());
            break;
        case 'H':
            options.source.selection.hidden = true;
            break;
        case 'd':
            options.source.selection.maxDepth = countOf(value());
            break;
        case 'j':
            options.jobs = countOf(value());
            break;
        case 'F':
            files_ = true;
            break;
        case 'S':
            suggest_ = true;
            break;
        case 'M':
            missing_.push_back(value());
            break;
        case 'O':
            sort_.push_back(value());
            break;
        case 'X':
            explain_ = true;
            options.explained = value();
            break;
        default:
            unmatched_ = true;
        }
    }

    void takeMarker(const std::string& marker, MetadataPattern::ValueType type)
    {
        if (marker.empty())
            throw WrongUsage();
        markers_.emplace_back(marker, type);
    }

    void takeTemplate(std::string text)
    {
        if (text.substr(0, 2) == "@@")
            text.erase(0, 1);
        const auto known = templateColumns().find(text);
        if (known == templateColumns().end())
            throw LeftOut();
        if (known->second.empty())
            throw WrongUsage();
        templates_.push_back(text);
        isNumber_[known->second.substr(0, 1)].insert(known->second.size() > 1);
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
        static const std::set<std::string> names = {"table", "csv", "tsv",   "json",
                                                    "jsonl", "vtt", "sqlite"};
        format_ = true;
        formatName = name == "auto" ? "" : name;
        if (name != "auto" && names.count(name) == 0)
            throw WrongUsage();
    }

    void guessFormat(const std::string& file)
    {
        static const std::map<std::string, std::string> names = {
            {".csv", "csv"},        {".tsv", "tsv"},  {".json", "json"}, {".jsonl", "jsonl"},
            {".ndjson", "jsonl"},   {".vtt", "vtt"},  {".db", "sqlite"}, {".sqlite", "sqlite"},
            {".sqlite3", "sqlite"}, {".txt", "table"}};
        for (const auto& [ending, name] : names) {
            bool ends = file.size() >= ending.size();
            for (std::size_t i = 0; ends && i < ending.size(); ++i) {
                const char c = file[file.size() - ending.size() + i];
                ends = c == ending[i] || (ending[i] != '.' && c == ending[i] - 'a' + 'A');
            }
            if (ends)
                formatName = name;
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
        if (options.source.root.empty() || (options.source.root[0] == '/') != (path[0] == '/'))
            return;
        const auto root = components(options.source.root);
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

    /// Enters a name, or one with "(2)", "(3)" and so on behind it if it is there already.
    static void enter(fuzz::Texts& names, const std::string& name, const fuzz::Texts& others)
    {
        std::string unique = name;
        for (int number = 2; std::count(names.begin(), names.end(), unique) != 0 ||
                             std::count(others.begin(), others.end(), unique) != 0;
             ++number)
            unique = name + '(' + std::to_string(number) + ')';
        names.push_back(unique);
    }

    /// The names of the columns of the table of cases or files.
    fuzz::Texts columnNames() const
    {
        fuzz::Texts names = files_ ? fuzz::Texts{"path", "case"} : fuzz::Texts{"case"};
        const bool hasTags = !options.identifiers.empty();
        const fuzz::Texts behind = !files_   ? fuzz::Texts{"files"}
                                   : hasTags ? fuzz::Texts{"tag"}
                                             : fuzz::Texts{};
        for (const MetadataPattern& pattern : options.reading.patterns())
            enter(names, pattern.pattern, behind);
        std::set<std::string> tags;
        for (const AuxFileIdentifier& identifier : options.identifiers) {
            if (files_ || !tags.insert(identifier.tag).second)
                continue;
            enter(names, identifier.tag, behind);
            enter(names, identifier.tag + " files", behind);
        }
        names.insert(names.end(), behind.begin(), behind.end());
        return names;
    }

    /// Reads a name, as a whole or one for each part between commas, and tells whether it can.
    template <class Find> static void readNames(const std::string& text, const Find& find)
    {
        if (find(text))
            return;
        std::string rest = text + ',';
        while (!rest.empty()) {
            const std::size_t comma = rest.find(',');
            if (!find(rest.substr(0, comma)))
                throw WrongUsage();
            rest.erase(0, comma + 1);
        }
    }

    void takeMissing()
    {
        // "case" and "files" stand around the columns of values.
        const fuzz::Texts names = missing_.empty() ? fuzz::Texts() : columnNames();
        std::set<std::size_t> seen;
        for (const std::string& text : missing_) {
            readNames(text, [&](const std::string& name) {
                for (std::size_t i = 1; i + 1 < names.size(); ++i) {
                    if (names[i] != name)
                        continue;
                    if (!seen.insert(i).second)
                        throw WrongUsage();
                    options.missingColumns.push_back(i - 1);
                    missingNames_.push_back(name);
                    return true;
                }
                return false;
            });
        }
        if (seen.size() == 1)
            throw WrongUsage();
    }

    void takeKeys()
    {
        if (sort_.empty())
            return;
        const fuzz::Texts names = missing_.empty() ? columnNames() : missingNames_;
        for (const std::string& text : sort_) {
            readNames(text, [&](const std::string& name) {
                for (const bool isDescending : {false, true}) {
                    for (std::size_t i = 0; i < names.size(); ++i) {
                        if ((isDescending ? '-' + names[i] : names[i]) != name)
                            continue;
                        options.sortKeys.push_back({i, isDescending});
                        return true;
                    }
                }
                return false;
            });
        }
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
        options.source.selection.excluded.emplace_back(glob);
    }

    /// Counts up, as long as the number has room.
    static std::size_t countOf(const std::string& text)
    {
        const std::size_t most = ~std::size_t{0};
        std::size_t count = 0;
        for (const char letter : text) {
            if (letter < '0' || letter > '9')
                throw WrongUsage();
            const auto digit = static_cast<std::size_t>(letter - '0');
            if (count > (most - digit) / 10)
                throw WrongUsage();
            count = count * 10 + digit;
        }
        if (count == 0)
            throw WrongUsage();
        return count;
    }

    const fuzz::Texts& arguments_;
    std::size_t next_ = 0;
    bool onlyRoots_ = false;
    int roots_ = 0;
    std::vector<MetadataPattern> markers_;
    fuzz::Texts templates_;
    std::map<std::string, std::set<bool>> isNumber_; // What templates say of a column.
    bool format_ = false;
    bool files_ = false;
    bool unmatched_ = false;
    bool suggest_ = false;
    bool explain_ = false;
    fuzz::Texts missing_;
    fuzz::Texts missingNames_; // Of the columns.
    fuzz::Texts sort_;
};

std::string shown(const casetable::Options& options, const std::string& formatName)
{
    std::string text = "root " + fuzz::shown(options.source.root) + " patterns " +
                       fuzz::shown(options.reading.patterns()) + " templates";
    if (options.reading.templates()) {
        for (const casetable::Template& each : options.reading.templates()->templates())
            text += " " + fuzz::shown(each.text());
    }
    text += " aux";
    for (const AuxFileIdentifier& identifier : options.identifiers)
        text += " " + fuzz::shown(identifier.syntaxName) + "=" + fuzz::shown(identifier.tag);
    text += " list " + (options.source.list ? fuzz::shown(*options.source.list) : "none") +
            " null " + std::to_string(options.source.nullSeparated) + " hidden " +
            std::to_string(options.source.selection.hidden) + " depth " +
            std::to_string(options.source.selection.maxDepth) + " exclude";
    for (const casetable::Glob& glob : options.source.selection.excluded)
        text += " " + fuzz::shown(glob.text());
    text += " missing";
    for (const std::size_t column : options.missingColumns)
        text += " " + std::to_string(column);
    text += " sort";
    for (const casetable::SortKey& key : options.sortKeys)
        text += (key.isDescending ? " -" : " ") + std::to_string(key.column);
    return text + " format " + formatName + " output " +
           (options.output ? fuzz::shown(*options.output) : "none") + " explain " +
           fuzz::shown(options.explained) + " rows " +
           std::to_string(static_cast<int>(options.rows)) + " keepGoing " +
           std::to_string(options.source.keepGoing) + " follow " +
           std::to_string(options.source.follow) + " quiet " + std::to_string(options.quiet) +
           " jobs " + std::to_string(options.jobs.value_or(0)) + " mode " +
           std::to_string(static_cast<int>(options.mode));
}

/// What the program's own reading makes of the arguments.
std::string readByProgram(const fuzz::Texts& arguments, fuzz::Texts& backAgain)
{
    std::vector<const char*> argv = {"casetable"};
    for (const std::string& argument : arguments)
        argv.push_back(argument.c_str());
    try {
        const std::optional<casetable::Options> options =
            casetable::parseOptions(static_cast<int>(argv.size()), argv.data());
        if (!options)
            return "something was printed";
        backAgain = casetable::arguments(*options);
        return shown(*options, options->format == nullptr ? "" : options->format->name);
    } catch (const casetable::Failure& failure) {
        return failure.code != casetable::ExitCode::WrongUsage ? "another exit code"
               : failure.what()[0] == '\0'                     ? "no message"
                                                               : wrongUsage;
    }
}

/// Asks for something to be printed, or for a file of templates, or may do so; it may also be the
/// value of an option, but that is no loss.
bool isLeftOut(const std::string& argument)
{
    for (std::size_t at = 0; (at = argument.find('@', at)) != std::string::npos;) {
        const std::size_t end = std::min(argument.find_first_not_of('@', at), argument.size());
        if (end - at == 1)
            return true;
        at = end;
    }
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
    for (const std::string& argument : arguments) {
        if (isLeftOut(argument))
            return -1;
    }

    std::string expected = wrongUsage;
    try {
        const PlainReading reading(arguments);
        expected = shown(reading.options, reading.formatName);
    } catch (const WrongUsage&) {
    } catch (const LeftOut&) {
        return -1;
    }
    fuzz::Texts backAgain;
    const std::string seen = readByProgram(arguments, backAgain);
    fuzz::expectSame("what the command line says", seen, expected, fuzz::shown(arguments));
    if (seen != wrongUsage) {
        fuzz::Texts same;
        fuzz::expectSame("what its options say as arguments", readByProgram(backAgain, same), seen,
                         fuzz::shown(backAgain));
    }
    return 0;
}
