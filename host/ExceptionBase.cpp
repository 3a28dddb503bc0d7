#include "host/ExceptionBase.h"

namespace ortelo
{

ExceptionBase::ExceptionBase(const std::string& message, bool flag) : message_(message), flag_(flag)
{
}

ExceptionBase::ExceptionBase(const ExceptionBase& other) = default;

ExceptionBase& ExceptionBase::operator=(const ExceptionBase& other) = default;

ExceptionBase::~ExceptionBase() = default;

const char* ExceptionBase::what() const noexcept
{
    return message_.c_str();
}

bool ExceptionBase::flag() const noexcept
{
    return flag_;
}

} // namespace ortelo
