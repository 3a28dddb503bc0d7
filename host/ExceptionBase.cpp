#include "host/ExceptionBase.h"

namespace ortelo {

ExceptionBase::ExceptionBase(const std::string& message, bool flag)
    : message_(message), flag_(flag) // NOLINT(bugprone-throw-keyword-missing): a member
{
}

ExceptionBase::ExceptionBase(const ExceptionBase& other) noexcept = default;

ExceptionBase& ExceptionBase::operator=(const ExceptionBase& other) noexcept = default;

ExceptionBase::~ExceptionBase() = default;

const char* ExceptionBase::what() const noexcept
{
    return message_.what();
}

bool ExceptionBase::flag() const noexcept
{
    return flag_;
}

} // namespace ortelo
