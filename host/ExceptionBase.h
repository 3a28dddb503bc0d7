#ifndef HOST_EXCEPTIONBASE_H
#define HOST_EXCEPTIONBASE_H

#include <exception>
#include <stdexcept>
#include <string>

#include "host/Export.h"

namespace ortelo {

/// The host's exception: what an operation throws that cannot do its work at the host boundary.
///
/// Thrown by value, caught by reference. Copying does not throw.
class HOST_API ExceptionBase : public std::exception {
public:
    /// Keeps an English message and a flag whose meaning belongs to the host; the module always
    /// passes `false`.
    ExceptionBase(const std::string& message, bool flag);
    /// Shares the message of `other`.
    ExceptionBase(const ExceptionBase& other) noexcept;
    /// Shares the message of `other`.
    ExceptionBase& operator=(const ExceptionBase& other) noexcept;
    ~ExceptionBase() override;

    /// The message; valid as long as the exception.
    const char* what() const noexcept override;

    /// The flag given at construction.
    bool flag() const noexcept;

private:
    std::runtime_error message_; // Shares the text between copies.
    bool flag_;
};

} // namespace ortelo

#endif
