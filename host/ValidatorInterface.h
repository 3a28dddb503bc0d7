#ifndef HOST_VALIDATORINTERFACE_H
#define HOST_VALIDATORINTERFACE_H

#include "host/Export.h"
#include "host/ValidationResult.h"

namespace ortelo {

/// Judges values of type `T`. Implementations inherit it as a virtual base.
template <class T> class HOST_API ValidatorInterface {
public:
    ValidatorInterface() = default;
    ValidatorInterface(const ValidatorInterface&) = default;
    ValidatorInterface& operator=(const ValidatorInterface&) = default;

    /// A valid result when `value` is acceptable, otherwise an invalid one with a message.
    virtual ValidationResult validate(const T& value) const = 0;

    virtual ~ValidatorInterface() = default;
};

} // namespace ortelo

#endif
