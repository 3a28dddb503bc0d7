#include "casetable/options/CommandLine.h"

#include <algorithm>
#include <cctype>
#include <cstddef>

#include "casetable/system/ExitCode.h"

namespace casetable {

namespace {

// Reads the arguments one by one, some as the value of the one before.
class Reader {
public:
    Reader(const std::vector<std::string>& arguments, Program program)
        : arguments_(arguments), program_(program)
    {
    }

    CommandLine read()
    {
        bool onlyRoots = false;
        while (next_ < arguments_.size()) {
            const std::string& argument = arguments_[next_++];
            if (onlyRoots || argument.size() < 2 || argument.front() != '-')
                add(optionOf(OptionId::Root), argument);
            else if (argument == "--")
                onlyRoots = true;
            else if (argument[1] == '-')
                readName(argument);
            else
                readLetters(argument);
        }
        return line_;
    }

private:
    void add(const Option& option, const std::string& value = "")
    {
        line_.items.push_back({&option, value});
    }

    void addUnknown(const std::string& option)
    {
        if (line_.unknown.empty())
            line_.unknown = option;
    }

    std::string nextArgument(const Option& option)
    {
        if (next_ == arguments_.size())
            failUsage(std::string(option.name) + ": its " + option.argument + " is missing");
        return arguments_[next_++];
    }

    void readName(const std::string& argument)
    {
        const std::size_t end = std::min(argument.find('='), argument.size());
        const Option* const option = optionNamed(argument.substr(0, end));
        if (option == nullptr)
            return addUnknown(argument);
        const bool hasValue = end < argument.size();
        if (hasValue && !takesValue(*option))
            failUsage(std::string(option->name) + ": takes no value");
        if (hasValue && end + 1 == argument.size())
            failUsage(std::string(option->name) + ": the value is empty");
        if (!takesValue(*option))
            add(*option);
        else
            add(*option, hasValue ? argument.substr(end + 1) : nextArgument(*option));
    }

    void readLetters(const std::string& argument)
    {
        // Without this, -suggest would be -s with the marker "uggest".
        const Option* const meant = optionNamed('-' + argument.substr(0, argument.find('=')));
        if (meant != nullptr && meant->isOf(program_))
            failUsage(argument + ": it takes two dashes, as in -" + argument);
        for (std::size_t i = 1; i < argument.size(); ++i) {
            const Option* const option = optionOfLetter(argument[i]);
            // In -q5, the 5 is meant as a value and not as an option.
            if (option == nullptr && i > 1 &&
                !std::isalpha(static_cast<unsigned char>(argument[i])))
                failUsage(argument + ": -" + argument[i - 1] + " takes no value");
            if (option == nullptr)
                return addUnknown('-' + argument.substr(i));
            if (takesValue(*option)) {
                const std::string rest = argument.substr(i + 1);
                return add(*option, rest.empty() ? nextArgument(*option) : rest);
            }
            add(*option);
        }
    }

    const std::vector<std::string>& arguments_;
    const Program program_;
    std::size_t next_ = 0;
    CommandLine line_;
};

} // namespace

void failUsage(const std::string& message)
{
    throw Failure(ExitCode::WrongUsage, message);
}

bool CommandLine::has(OptionId id) const
{
    return std::any_of(items.begin(), items.end(),
                       [id](const Item& item) { return item.option->id == id; });
}

std::vector<std::string> CommandLine::valuesOf(OptionId id) const
{
    std::vector<std::string> values;
    for (const Item& item : items) {
        if (item.option->id == id)
            values.push_back(item.value);
    }
    return values;
}

CommandLine readCommandLine(const std::vector<std::string>& arguments, Program program)
{
    return Reader(arguments, program).read();
}

} // namespace casetable
