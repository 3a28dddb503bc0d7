#include "crawler/SyntaxNameFilter.h"

#include <QRegExp>
#include <QString>

template class ortelo::ValidatorInterface<std::string>;

namespace {

// A catch-all would select every candidate; it is refused on purpose.
bool passesAsteriskTest(const std::string& name)
{
    return name.find_first_not_of('*') != std::string::npos;
}

QStringList selection(const QStringList& syntaxes, const std::string& name)
{
    const QRegExp expression(QString::fromStdString(name), Qt::CaseSensitive, QRegExp::Wildcard);
    QStringList selected;
    for (const QString& syntax : syntaxes) {
        if (expression.lastIndexIn(syntax, -1, QRegExp::CaretAtZero) == -1)
            continue;
        const QString match = expression.capturedTexts().at(0);
        if (syntax.endsWith(match, Qt::CaseSensitive))
            selected.append(syntax);
    }
    return selected;
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
    return passesAsteriskTest(name) ? selection(syntaxes_, name) : QStringList();
}

ortelo::ValidationResult SyntaxNameFilter::validate(const std::string& name) const
{
    ortelo::ValidationResult result;
    if (!passesAsteriskTest(name) || selection(syntaxes_, name).isEmpty())
        result.setErrorString("Invalid pattern.");
    return result;
}
