#ifndef TESTS_CRAWLER_AUXFILEDOUBLES_H
#define TESTS_CRAWLER_AUXFILEDOUBLES_H

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include <QRegExp>
#include <QString>
#include <QStringList>

#include "crawler/AuxFileIdentifierValidator.h"
#include "host/AuxFileInfoInterface.h"
#include "host/TagValidator.h"
#include "host/ValidationResult.h"

namespace doubles {

/// A file that is nothing but its path and its case.
struct FixedAuxFile : public virtual AuxFileInfoInterface {
    explicit FixedAuxFile(std::string filePath, std::size_t caseIndex = 0)
        : path(std::move(filePath)), index(caseIndex)
    {
    }

    std::string filePath() const override { return path; }
    bool isMatched() const override { return true; }
    void setCaseIndex(std::size_t caseIndex) override { index = caseIndex; }
    std::size_t caseIndex() const override { return index; }
    std::string label() const override { return ""; }
    Type type() const override { return OtherFile; }

    std::string path;
    std::size_t index;
};

/// Counts how often it is asked. The answers wait in a row; the last one stays.
struct RecordingProvider : public AuxFileIdentifierValidator::IdentifierProviderInterface {
    using Identifiers = std::vector<AuxFileIdentifier>;

    RecordingProvider() = default;
    RecordingProvider(std::initializer_list<AuxFileIdentifier> identifiers)
        : answers{Identifiers(identifiers)}
    {
    }

    Identifiers identifiers() const override
    {
        const std::size_t next = asked++;
        return answers.empty() ? Identifiers() : answers[std::min(next, answers.size() - 1)];
    }

    /// From now on the answers are these, and nothing was asked.
    void answer(std::vector<Identifiers> newAnswers)
    {
        answers = std::move(newAnswers);
        asked = 0;
    }

    std::vector<Identifiers> answers;
    mutable std::size_t asked = 0;
};

/// Refuses every tag that contains a '!', and writes down what it was given.
struct RecordingTagValidator : public TagValidator {
    ortelo::ValidationResult validate(const std::string& tag) const override
    {
        validated.push_back(tag);
        ortelo::ValidationResult result;
        if (tag.find('!') != std::string::npos)
            result.setErrorString("Bad tag.");
        return result;
    }

    mutable std::vector<std::string> validated;
};

/// The candidates that a syntax name selects, as the rule says it.
inline QStringList plainSelection(const QStringList& candidates, const std::string& name)
{
    QStringList selected;
    QRegExp expression(QString::fromStdString(name), Qt::CaseSensitive, QRegExp::Wildcard);
    for (const QString& candidate : candidates) {
        if (expression.lastIndexIn(candidate, -1, QRegExp::CaretAtZero) == -1)
            continue;
        if (candidate.endsWith(expression.capturedTexts().at(0), Qt::CaseSensitive))
            selected.append(candidate);
    }
    return selected;
}

/// The same without the names that select everything or nothing.
inline QStringList plainFilter(const QStringList& candidates, const std::string& name)
{
    for (const char letter : name)
        if (letter != '*')
            return plainSelection(candidates, name);
    return QStringList();
}

} // namespace doubles

#endif
