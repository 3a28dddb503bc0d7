#include "host/ValidationResult.h"

#include <utility>

namespace ortelo {

ValidationResult::ValidationResult() = default;

ValidationResult::ValidationResult(const ValidationResult& other) = default;

ValidationResult& ValidationResult::operator=(const ValidationResult& other) = default;

bool ValidationResult::isValid() const
{
    return valid_;
}

void ValidationResult::setErrorString(std::string message)
{
    valid_ = false;
    errorString_ = std::move(message);
}

ValidationResult::~ValidationResult() = default;

const std::string& ValidationResult::errorString() const
{
    return errorString_;
}

} // namespace ortelo
