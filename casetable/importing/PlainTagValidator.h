#ifndef CASETABLE_IMPORTING_PLAINTAGVALIDATOR_H
#define CASETABLE_IMPORTING_PLAINTAGVALIDATOR_H

#include <string>

#include "host/TagValidator.h"

namespace casetable {

/// Accepts every tag that is not empty and holds no control character.
class PlainTagValidator : public TagValidator {
public:
    /// Valid, or half a sentence that says what is wrong with the tag.
    ortelo::ValidationResult validate(const std::string& tag) const override;
};

} // namespace casetable

#endif
