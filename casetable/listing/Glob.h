#ifndef CASETABLE_LISTING_GLOB_H
#define CASETABLE_LISTING_GLOB_H

#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace casetable {

/// A pattern for files and folders below a root, in the manner of the files that tell version
/// control what to ignore. All is bytes, whatever the user's language.
///
/// The text is divided at every "/". In each component "*" stands for any bytes, "?" for one, a
/// bracket such as "[a-z]" or "[!ab]" for one of a set, and "\" takes the next byte as it is. None
/// of them crosses a "/"; a "[" that nothing closes in its component stands for itself.
///
/// A text without "/" is matched against the name of an entry, at any depth. One with a "/" in
/// front or inside is matched against the path below the root; there a component "**" stands for
/// any number of components, or none, but at the end of the text for at least one. A "/" at the end
/// means that only folders match. A component "." counts for nothing, in the text as in the path.
class Glob {
public:
    /// Throws std::invalid_argument with the reason when a component is empty, when a component
    /// ends in a "\" that takes no byte, and when there is no component.
    explicit Glob(const std::string& text);

    /// Whether matches() needs the path of an entry. Otherwise its name will do.
    bool needsPath() const { return needsPath_; }

    /// Whether the entry at `path`, relative to the root, matches. The folders above it are not
    /// looked at. May be asked from any thread.
    bool matches(std::string_view path, bool isFolder) const;

    /// Whether it, or a copy of it, has matched anything so far; may be asked from any thread.
    bool hasMatched() const { return *matched_; }

    /// Takes it that a copy of it in another process has matched something.
    void noteMatch() const { *matched_ = true; }

    /// The pattern as it was given.
    const std::string& text() const { return text_; }

private:
    bool isMatch(std::string_view path, bool isFolder) const;
    bool matchesPath(const std::vector<std::string>& path) const;

    std::string text_;
    std::vector<std::string> components_;
    bool needsPath_ = false;
    bool foldersOnly_ = false;
    std::shared_ptr<std::atomic<bool>> matched_ = std::make_shared<std::atomic<bool>>(false);
};

} // namespace casetable

#endif
