#ifndef CRAWLER_SYNTAXNAMEFILTER_H
#define CRAWLER_SYNTAXNAMEFILTER_H

#include <string>
#include <vector>

#include <QStringList>

#include "crawler/Export.h"
#include "host/ValidationResult.h"
#include "host/ValidatorInterface.h"

/// Selects candidate texts, usually paths, by a syntax name.
///
/// A syntax name is a wildcard in which `*` stands for any run of characters, separators included,
/// `?` for one character and `[...]` for one of a set, case-sensitive, as QRegExp::Wildcard reads
/// it. It selects the candidates that end with the text of its last match in them, searched for
/// from the end backwards. An empty name and one of asterisks alone select nothing.
///
/// Immutable after construction: it may be read from several threads at once.
class CRAWLER_API SyntaxNameFilter : public virtual ortelo::ValidatorInterface<std::string> {
public:
    /// Copies the candidates; duplicates stay.
    explicit SyntaxNameFilter(const QStringList& syntaxes);

    /// One candidate: `syntax` up to its first NUL, read as UTF-8.
    explicit SyntaxNameFilter(const std::string& syntax);

    ~SyntaxNameFilter() override;

    /// The candidates that `name` selects, in list order, each as often as it stands in the list.
    virtual QStringList filter(const std::string& name) const;

    /// Valid when `name` selects at least one candidate, otherwise invalid with the message
    /// "Invalid pattern.".
    ortelo::ValidationResult validate(const std::string& name) const override;

protected:
    /// Where the candidates that filter() selects stand in the list, from 0, ascending.
    std::vector<int> selectedPositions(const std::string& name) const;

private:
    QStringList syntaxes_;
};

#endif
