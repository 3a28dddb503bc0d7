#include "casetable/running/Ending.h"

#include <exception>
#include <new>

#include "casetable/system/Console.h"
#include "casetable/system/Interrupt.h"

namespace casetable {

Ending endingOf(const std::function<ExitCode()>& act, Console& console)
{
    try {
        return {static_cast<int>(act())};
    } catch (const Failure& failure) {
        console.error(failure.what(), failure.excerpt);
        return {static_cast<int>(failure.code)};
    } catch (const Interrupted& interrupted) {
        return {128 + interrupted.signal, interrupted.leavesThreads};
    } catch (const std::bad_alloc&) {
        console.error("not enough memory");
    } catch (const std::exception& failure) {
        console.error(failure.what());
    }
    return {static_cast<int>(ExitCode::ImportFailed)};
}

} // namespace casetable
