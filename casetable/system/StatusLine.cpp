#include "casetable/system/StatusLine.h"

#include "casetable/system/Console.h"

namespace casetable {

namespace {

const std::chrono::milliseconds interval(200);

} // namespace

StatusLine::StatusLine(Console& console)
    : console_(console), updated_(std::chrono::steady_clock::now())
{
}

StatusLine::~StatusLine()
{
    console_.clearStatus();
}

void StatusLine::update(const std::function<std::string()>& text)
{
    const auto now = std::chrono::steady_clock::now();
    if (now - updated_ < interval)
        return;
    updated_ = now;
    console_.setStatus(text());
}

} // namespace casetable
