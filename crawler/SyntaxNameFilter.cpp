#include "crawler/SyntaxNameFilter.h"

#include <algorithm>

#include <QRegExp>
#include <QString>

template class ortelo::ValidatorInterface<std::string>;

namespace {

const QChar anyCharacters('*');
const QChar oneCharacter('?');

// A name of asterisks alone would select every candidate, which is hardly what its user means.
bool passesAsteriskTest(const std::string& name)
{
    return name.find_first_not_of('*') != std::string::npos;
}

// The rule as it is defined: the candidate ends with the text of its last match.
class ExpressionMatch {
public:
    explicit ExpressionMatch(const QString& name)
        : expression_(name, Qt::CaseSensitive, QRegExp::Wildcard)
    {
    }

    bool selects(const QString& candidate) const
    {
        return expression_.lastIndexIn(candidate, -1, QRegExp::CaretAtZero) != -1 &&
               candidate.endsWith(expression_.capturedTexts().at(0), Qt::CaseSensitive);
    }

private:
    QRegExp expression_;
};

// The same, faster, for names of literals, '*' and '?' alone. The asterisks divide such a name into
// runs: "a*b?c" has the runs "a" and "b?c". A candidate is selected when it ends with the last run
// and has the other runs in front of that, in their order and without overlap: then the last match
// reaches its end, and otherwise no match does. Where the name ends with an asterisk, every match
// reaches the end, so it is enough that all runs are there.
class RunMatch {
public:
    // True for names that have a run, but neither sets nor characters that QRegExp reads in ways of
    // its own.
    static bool canRead(const QString& name)
    {
        return std::none_of(
                   name.begin(), name.end(),
                   [](QChar c) { return c == '[' || c == ']' || c == '\\' || c.isNull(); }) &&
               std::any_of(name.begin(), name.end(), [](QChar c) { return c != anyCharacters; });
    }

    explicit RunMatch(const QString& name)
        : runs_(name.split(anyCharacters)), isOpenEnded_(name.endsWith(anyCharacters))
    {
        runs_.removeAll(QString());
    }

    bool selects(const QString& candidate) const
    {
        // The runs from number `run` on are found already, the leftmost of them at `begin`.
        int begin = candidate.size();
        int run = runs_.size();
        if (!isOpenEnded_) {
            --run;
            begin -= runs_[run].size();
            if (begin < 0 || !standsAt(candidate, begin, runs_[run]))
                return false;
        }
        while (run > 0) {
            --run;
            begin = lastPositionBefore(candidate, begin, runs_[run]);
            if (begin < 0)
                return false;
        }
        return true;
    }

private:
    static bool standsAt(const QString& candidate, int position, const QString& run)
    {
        return std::equal(
            run.begin(), run.end(), candidate.begin() + position,
            [](QChar wanted, QChar c) { return wanted == c || wanted == oneCharacter; });
    }

    // The last position at which all of `run` stands in front of `end`, or a negative number.
    static int lastPositionBefore(const QString& candidate, int end, const QString& run)
    {
        int position = end - run.size();
        while (position >= 0 && !standsAt(candidate, position, run))
            --position;
        return position;
    }

    QStringList runs_;
    bool isOpenEnded_;
};

// Calls `act` with the match that suits `name`.
template <class Act> auto withMatch(const std::string& name, Act act)
{
    const QString syntaxName = QString::fromStdString(name);
    return RunMatch::canRead(syntaxName) ? act(RunMatch(syntaxName))
                                         : act(ExpressionMatch(syntaxName));
}

} // namespace

SyntaxNameFilter::SyntaxNameFilter(const QStringList& syntaxes) : syntaxes_(syntaxes) {}

SyntaxNameFilter::SyntaxNameFilter(const std::string& syntax)
    : syntaxes_(QString::fromUtf8(syntax.c_str()))
{
}

SyntaxNameFilter::~SyntaxNameFilter() = default;

QStringList SyntaxNameFilter::filter(const std::string& name) const
{
    QStringList selected;
    for (const int position : selectedPositions(name))
        selected.append(syntaxes_[position]);
    return selected;
}

ortelo::ValidationResult SyntaxNameFilter::validate(const std::string& name) const
{
    ortelo::ValidationResult result;
    const bool selectsAny =
        passesAsteriskTest(name) && withMatch(name, [this](const auto& match) {
            return std::any_of(syntaxes_.begin(), syntaxes_.end(),
                               [&](const QString& syntax) { return match.selects(syntax); });
        });
    if (!selectsAny)
        result.setErrorString("Invalid pattern.");
    return result;
}

std::vector<int> SyntaxNameFilter::selectedPositions(const std::string& name) const
{
    std::vector<int> positions;
    if (!passesAsteriskTest(name))
        return positions;
    withMatch(name, [&](const auto& match) {
        for (int position = 0; position < syntaxes_.size(); ++position) {
            if (match.selects(syntaxes_[position]))
                positions.push_back(position);
        }
    });
    return positions;
}
