#ifndef HOST_VALIDATIONRESULT_H
#define HOST_VALIDATIONRESULT_H

#include <string>

#include "host/Export.h"

namespace ortelo {

/// The answer of a validator: valid, or invalid with a message that says why.
class HOST_API ValidationResult {
public:
    /// A valid result.
    ValidationResult();
    /// Copies the answer and the message.
    ValidationResult(const ValidationResult& other);
    /// Copies the answer and the message.
    ValidationResult& operator=(const ValidationResult& other);

    /// True until setErrorString() is called.
    virtual bool isValid() const;

    /// Makes the result invalid and records `message`.
    virtual void setErrorString(std::string message);

    virtual ~ValidationResult();

    /// The message last recorded; empty for a valid result.
    const std::string& errorString() const;

private:
    bool valid_ = true;
    std::string errorString_;
};

} // namespace ortelo

#endif
