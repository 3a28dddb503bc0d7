#include "casetable/options/Help.h"

#include <cstddef>
#include <sstream>

#include "casetable/options/OptionTable.h"

namespace casetable {

namespace {

const std::size_t helpColumn = 24;
const std::size_t lineWidth = 80;

const char* const exitCodes = R"(
Exit codes:
  0  a table with cases    1  no file matched, or nothing could be suggested
  2  wrong usage           3  the walk, the list, the matching or --aux failed
  4  the output failed     130  interrupted
)";

const char* const examples = R"(
Examples:
  casetable --suggest results
  casetable -t 'wing{wing}/Mach{Mach:number}/**' results
  casetable -n Mach --aux '*.log=log' -o cases.json results
)";

const char* const examplesForMany = R"(
Examples:
  mpirun -n 64 casetable-mpi -n Mach -n AoA -o cases.csv results
  mpirun -n 64 casetable-mpi -n Mach --from-list files.txt -o cases.csv
)";

// The lines of an option: its name, and beside it its help, broken between words.
std::string linesOf(const Option& option)
{
    std::string line = "  ";
    if (option.letter != '\0')
        line += std::string("-") + option.letter + ',';
    line += option.name;
    if (takesValue(option))
        line += std::string(" ") + option.argument;

    std::string text;
    if (line.size() >= helpColumn) {
        text = line + '\n';
        line.clear();
    }
    std::istringstream words(option.help);
    for (std::string word; words >> word;) {
        if (line.size() < helpColumn) {
            line.resize(helpColumn, ' ');
        } else if (line.size() + 1 + word.size() > lineWidth) {
            text += line + '\n';
            line.assign(helpColumn, ' ');
        } else {
            line += ' ';
        }
        line += word;
    }
    return text + line + '\n';
}

} // namespace

std::string help(Program program)
{
    std::string options;
    for (const Option& option : optionTable()) {
        if (option.id != OptionId::Root && option.isOf(program))
            options += linesOf(option);
    }
    const bool isForMany = program == Program::CasetableMpi;
    return std::string("Groups the files below ROOT into cases by the values in their paths") +
           (isForMany ? ",\nin several processes at once, on one machine or many" : "") +
           ".\nUsage: " + (isForMany ? "mpirun -n N " : "") + nameOf(program) +
           " [OPTIONS] ROOT\n" + linesOf(optionOf(OptionId::Root)) + "\nOptions:\n" + options +
           exitCodes + (isForMany ? examplesForMany : examples);
}

} // namespace casetable
