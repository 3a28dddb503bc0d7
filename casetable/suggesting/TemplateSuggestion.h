#ifndef CASETABLE_SUGGESTING_TEMPLATESUGGESTION_H
#define CASETABLE_SUGGESTING_TEMPLATESUGGESTION_H

#include <string>
#include <string_view>
#include <vector>

namespace casetable {

/// Templates that read the paths, the one that reads most first: at most eight, until nearly all
/// paths are read or nothing regular is left; none where nothing is. They can be given together:
/// each is a template, and no name is a number in one of them alone.
///
/// They come of at most 2,000 of the paths, whatever the order, so they may leave some of the
/// others unread. Takes time in proportion to the number of paths. Paths are relative and are not
/// copied.
std::vector<std::string> suggestTemplates(const std::vector<std::string_view>& paths);

} // namespace casetable

#endif
