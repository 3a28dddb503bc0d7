#include "casetable/listing/Progress.h"

#include <cmath>
#include <utility>

namespace casetable {

namespace {

// Below that, too little is known of how fast it goes.
const double leastSeconds = 1;

// So coarse that it does not flicker, and never less than it is.
std::string timeText(double seconds)
{
    const auto up = [](double time, double step) {
        return static_cast<unsigned long long>(std::ceil(time / step) * step);
    };
    if (seconds <= 10)
        return std::to_string(up(seconds, 1)) + " s";
    if (seconds <= 60)
        return std::to_string(up(seconds, 5)) + " s";
    const unsigned long long minutes = up(seconds / 60, seconds <= 3600 ? 1 : 10);
    if (minutes <= 60)
        return std::to_string(minutes) + " min";
    return std::to_string(minutes / 60) + " h" +
           (minutes % 60 == 0 ? "" : " " + std::to_string(minutes % 60) + " min");
}

} // namespace

std::string listProgress(const std::string& name, std::size_t paths, std::size_t bytesRead,
                         std::size_t bytes, std::chrono::duration<double> elapsed)
{
    std::string text = std::to_string(paths) + " paths";
    if (bytes > 0 && bytesRead <= bytes) {
        const auto read = static_cast<double>(bytesRead);
        const auto all = static_cast<double>(bytes);
        text += ", " + std::to_string(static_cast<int>(read * 100 / all)) + " %";
        if (elapsed.count() >= leastSeconds && bytesRead > 0 && bytesRead < bytes)
            text += ", " + timeText(elapsed.count() * (all - read) / read) + " left";
    }
    return text + ": " + name;
}

std::string Progress::text(std::size_t files) const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return std::to_string(folders_) + " folders, " + std::to_string(files) +
           " files: " + current_.toStdString();
}

void Progress::enterFolder(QString folder)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    ++folders_;
    current_ = std::move(folder);
}

} // namespace casetable
