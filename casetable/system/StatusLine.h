#ifndef CASETABLE_SYSTEM_STATUSLINE_H
#define CASETABLE_SYSTEM_STATUSLINE_H

#include <chrono>
#include <functional>
#include <string>

namespace casetable {

class Console;

/// The console's status line during one piece of work; cleared however the work ends.
class StatusLine {
public:
    explicit StatusLine(Console& console);
    ~StatusLine();
    StatusLine(const StatusLine&) = delete;
    StatusLine& operator=(const StatusLine&) = delete;

    /// Shows what `text` answers, unless the line has changed a moment ago. Call it often.
    void update(const std::function<std::string()>& text);

private:
    Console& console_;
    std::chrono::steady_clock::time_point updated_;
};

} // namespace casetable

#endif
