#ifndef CASETABLE_SYSTEM_STATUSLINE_H
#define CASETABLE_SYSTEM_STATUSLINE_H

#include <chrono>
#include <functional>
#include <string>

namespace casetable {

class Console;

/// The console's status line during one piece of work; the end of its life takes it off, however
/// the work ends. Used by one thread at a time.
class StatusLine {
public:
    /// `console` must outlive it.
    explicit StatusLine(Console& console);
    ~StatusLine();
    StatusLine(const StatusLine&) = delete;
    StatusLine& operator=(const StatusLine&) = delete;

    /// Shows what `text` answers, but only every fifth of a second, so it may be called often.
    void update(const std::function<std::string()>& text);

private:
    Console& console_;
    std::chrono::steady_clock::time_point updated_;
};

} // namespace casetable

#endif
