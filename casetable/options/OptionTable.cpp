#include "casetable/options/OptionTable.h"

#include <algorithm>

#include "casetable/writing/Formats.h"

namespace casetable {

namespace {

// All formats, and "auto", by which the user leaves the choice to the program.
std::vector<std::string> formatWords()
{
    std::vector<std::string> words = {"auto"};
    for (const Format& format : formats())
        words.emplace_back(format.name);
    return words;
}

std::string formatManual()
{
    std::vector<std::string> names = formatWords();
    for (std::string& name : names)
        name = "\\fB" + name + "\\fR";
    std::string endings;
    for (const Format& format : formats()) {
        for (const std::string ending : format.endings)
            endings += (endings.empty() ? "" : ", ") + ending + " for " + format.name;
    }
    return choice(names) + ".\n.B auto\ngoes by the ending of\n.I FILE\n(" + endings +
           "); otherwise it is a table on a terminal and CSV elsewhere.\n" + R"(.B sqlite
is a database with tables of the cases, of their files, with
.B \-\-aux
of the files under each tag, with
.B \-\-unmatched
of the files in no case, and of what the run was. It needs
.BR \-\-output ,
and there a regular file.
)";
}

std::vector<Option> makeTable()
{
    using Id = OptionId;
    using Group = OptionGroup;
    const bool once = false;
    const bool repeatable = true;
    const Completion none = Completion::Nothing;

    return {
        {Id::Help, Group::Other, 'h', "--help", "", once, none, "Print this help and exit",
         "Print a summary of the options and exit.\n"},

        {Id::Version, Group::Other, '\0', "--version", "", once, none, "Print the version and exit",
         "Print the version and exit.\n"},

        {Id::String, Group::Markers, 's', "--string", "MARKER", repeatable, none,
         "A column of the text right behind MARKER", R"(A column of the text that follows
.IR MARKER ,
up to the next / or \e, up to the next marker, or to the end of the path. Where the next marker or the
path ends it, all from its first point on is left off as a file extension, and a single character that
remains is not taken as a value.
)"},

        {Id::Number, Group::Markers, 'n', "--number", "MARKER", repeatable, none,
         "A column of the numbers right behind MARKER", R"(A column of the number right behind
.IR MARKER :
an optional sign, digits with an optional fraction, and an optional exponent that begins with e, E, d
or D. The column keeps the text of the path; what does not convert to a number, as exponents with d
or D do not, is no value.
)"},

        {Id::Template,
         Group::Markers,
         't',
         "--template",
         "TEMPLATE",
         repeatable,
         none,
         "Columns at each {name} in TEMPLATE; @FILE holds several",
         R"(Read each path by
.IR TEMPLATE ,
which describes it whole; a column stands at each {name}.
.B @\fIFILE\fR
takes a template from each line of
.IR FILE ,
but for empty ones and those that begin with #. May be given several times: each path is read by the
first template that fits it. See
.BR TEMPLATES .
)",
         {Id::String, Id::Number}},

        {Id::Aux, Group::Output, 'a', "--aux", "SYNTAX=TAG", repeatable, none,
         "Collect matched files under TAG, by wildcard",
         R"(Collect the matched files whose path ends as the wildcard
.I SYNTAX
says, case by case, under
.IR TAG .
* is any text, / included, ? one character, [...] one of a set; asterisks alone select nothing.
May be given several times; a file belongs to the first that selects it.
)"},

        {Id::Format,
         Group::Output,
         'f',
         "--format",
         "FORMAT",
         once,
         Completion::Words,
         choice(formatWords()) + "; auto goes by FILE",
         formatManual(),
         {},
         {},
         formatWords()},

        {Id::Output, Group::Output, 'o', "--output", "FILE", once, Completion::Files,
         "Write to FILE, replaced once all is written", R"(Write to
.I FILE
instead of standard output. It is replaced once all is written, unless it is one of the matched files or the list;
.B \-
is standard output. Until then a file
.I .casetable\-*
stands beside it. Where a run is killed, that may stay; the next run with the same
.I FILE
removes it.
)"},

        {Id::FromList,
         Group::Source,
         '\0',
         "--from-list",
         "FILE",
         once,
         Completion::Files,
         "Paths, one a line, in place of ROOT; - is standard input",
         R"(Take the paths of the files from
.IR FILE ,
one a line, instead of listing a folder;
.B \-
is standard input. A path that is absolute, contains .. or an empty component, ends in . or
lies below another path of the list is refused with its line. A carriage return at every line's end, a
byte order mark and quotes belong to the paths, with a warning.
)",
         {Id::Root, Id::Follow, Id::KeepGoing}},

        {Id::Null,
         Group::Source,
         '0',
         "--null",
         "",
         once,
         none,
         "The paths in the list end with NUL",
         "The paths in the list end with NUL instead of a newline.\n",
         {},
         Id::FromList},

        {Id::Exclude, Group::Source, 'E', "--exclude", "GLOB", repeatable, none,
         "Leave out what GLOB matches, as in ignore files", R"(Leave out the files and folders that
.I GLOB
matches, as a line of an ignore file does, but for !, # and spaces at the end, which stand for
themselves: by name, or, if it contains a /, by path below
.IR ROOT .
*, ? and [...] stay within a name; ** stands for any number of folders; a / at the end matches folders
alone. May be given several times.
)"},

        {Id::Hidden, Group::Source, 'H', "--hidden", "", once, none,
         "Also take names that begin with a dot",
         R"(Also take files and folders whose name begins with a dot. They are left out otherwise, except in a
list.
)"},

        {Id::MaxDepth, Group::Source, 'd', "--max-depth", "N", once, none,
         "Go no deeper than N; the files in ROOT have depth 1", R"(Go no deeper than
.I N
levels; the files directly in
.I ROOT
are at level 1.
)"},

        {Id::Suggest,
         Group::Markers,
         '\0',
         "--suggest",
         "",
         once,
         none,
         "Propose templates, as a command line to run",
         R"(Propose templates: print the command line to run, and what it gives: a line for each column with a
sample of its values, the files that each template reads where there are several, how many files are
read and how many cases they make. The counts are those of a real import; to find the templates, a
sample of the paths is looked at.
)",
         {Id::String, Id::Number, Id::Template, Id::Aux, Id::Format, Id::Files, Id::Unmatched,
          Id::Missing, Id::Sort, Id::Explain}},

        {Id::Files, Group::Output, '\0', "--files", "", once, none,
         "A row for each matched file instead of each case",
         "A row for each matched file instead of one for each case.\n"},

        {Id::Unmatched,
         Group::Output,
         '\0',
         "--unmatched",
         "",
         once,
         none,
         "The files in no case, each with what failed",
         R"(The files that belong to no case, each with the first marker that failed: the first that is not found,
or, where all are found, the first without a value. With templates: each with the template that came
furthest in its path, and the element of it that failed.
)",
         {Id::Files, Id::Aux}},

        {Id::Missing,
         Group::Output,
         '\0',
         "--missing",
         "COLUMNS",
         repeatable,
         none,
         "The combinations of these columns' values in no case",
         R"(Each combination of the values of these columns that no case has, a row each, sorted by the columns.
.I COLUMNS
are the names of two or more columns of values, as the table's header shows them, divided by commas, or
each with an option of its own. Numbers that are equal, as 5 and 5.0, are one value. A case that has no
value in one of the columns takes no part. More than 100,000 rows are an error.
)",
         {Id::Files, Id::Unmatched, Id::Aux}},

        {Id::Sort,
         Group::Output,
         '\0',
         "--sort",
         "COLUMNS",
         repeatable,
         none,
         "Sort the rows by these columns; -COLUMN is descending",
         R"(Sort the rows by
.IR COLUMNS ,
names as the table's header shows them, divided by commas: by the first, then by the next where that is
equal. A
.B \-
in front of a name sorts in descending order. Numbers go by value; texts as people count, run2 before
run10; no value comes last in either order. Rows that are equal stay in the order that they have without
this option; cases keep their numbers. A name that holds commas or begins with a \- is given alone. May be given
several times.
)",
         {Id::Unmatched}},

        {Id::Explain,
         Group::Markers,
         '\0',
         "--explain",
         "PATH",
         once,
         Completion::Files,
         "How one path is read, and why not; needs no ROOT",
         R"(Show how the markers or the templates read one path, where matching stopped, and by which rule or
element.
.I PATH
is relative to
.IR ROOT ;
if
.I ROOT
is given and
.I PATH
begins with it, that beginning is left off. Nothing need exist; the exit status is 1 if the path is
not matched.
)",
         {Id::Aux, Id::Files, Id::Unmatched, Id::Missing, Id::Sort, Id::Format, Id::FromList}},

        {Id::KeepGoing, Group::Source, '\0', "--keep-going", "", once, none,
         "Leave unreadable folders out, with a warning each",
         "Skip folders that cannot be read, with a warning each, instead of stopping.\n"},

        {Id::Follow, Group::Source, 'L', "--follow", "", once, none, "Follow links to folders",
         "Follow links to folders, except into a folder that is its own ancestor.\n"},

        {Id::Jobs, Group::Other, 'j', "--jobs", "N", once, none,
         "Import on N threads; by default all that it may use", R"(Import on
.I N
threads; by default on as many as the process may use processors. What comes out is the same for any
number. With 1, files are listed and imported on one thread.
)"},

        {Id::Quiet, Group::Output, 'q', "--quiet", "", once, none,
         "No progress, warnings or remarks",
         "No progress, warnings or remarks on standard error.\n"},

        {Id::Root, Group::Source, '\0', "ROOT", "", once, none, "The folder to import", ""},
    };
}

template <class Question> const Option* firstOption(const Question& question)
{
    const std::vector<Option>& table = optionTable();
    const auto found = std::find_if(table.begin(), table.end(), question);
    return found == table.end() ? nullptr : &*found;
}

} // namespace

const std::vector<Option>& optionTable()
{
    static const std::vector<Option> table = makeTable();
    return table;
}

const Option& optionOf(OptionId id)
{
    return *firstOption([id](const Option& option) { return option.id == id; });
}

const Option* optionNamed(std::string_view name)
{
    return firstOption([name](const Option& option) { return option.name == name; });
}

const Option* optionOfLetter(char letter)
{
    return firstOption([letter](const Option& option) {
        return option.letter == letter && option.letter != '\0';
    });
}

bool takesValue(const Option& option)
{
    return *option.argument != '\0';
}

std::string choice(const std::vector<std::string>& words)
{
    std::string text = words.front();
    for (std::size_t k = 1; k < words.size(); ++k)
        text += (k + 1 < words.size() ? ", " : " or ") + words[k];
    return text;
}

} // namespace casetable
