#ifndef WINDOW_MODEL_NAMING_H
#define WINDOW_MODEL_NAMING_H

#include <atomic>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

#include "window/model/Files.h"

namespace casetable {

/// Files that are alike: those of the same depth and the same ending.
struct Neighbours {
    /// Of each component, whether all have the same.
    std::vector<bool> agree;
    /// Some of them, evenly chosen: at most mostSampled.
    std::vector<std::string> sample;

    static constexpr std::size_t mostSampled = 500;
};

/// The neighbours of `path` among `files`, itself included. What was cancelled is not complete.
Neighbours findNeighbours(const Files& files, const std::string& path,
                          const std::atomic<bool>& isCancelled);

/// Some bytes of a path that get a name.
struct NamedBytes {
    std::string path;
    std::size_t begin;
    std::size_t end;
    std::string name;
};

/// Bytes that cannot be named. what() is a sentence without its full stop.
class NamingError : public std::invalid_argument {
public:
    using std::invalid_argument::invalid_argument;
};

/// The templates with a column more, and which of them has it.
struct NamedTemplates {
    std::vector<std::string> templates;
    std::size_t index;
};

/// Gives bytes a name: the first template of `templates` that fits the path gets a column there,
/// and keeps those that it has; where none fits, a new template stands behind them. It fits the
/// path, the new column reads exactly the bytes, and the others what they read before. Where the
/// bytes are exactly what a column of that template reads, the column gets the name instead.
///
/// A component that agrees in all neighbours becomes text; in one that differs, "*" stands around
/// the bytes, up to text that all neighbours have next to them. The column's type is the narrowest
/// that fits what all neighbours have there: number, digits for numbers with zeros in front, word,
/// or text.
///
/// Blank templates do not count, and none may be invalid. Throws NamingError where the bytes are
/// none, hold a "/", or belong to a column of other bytes already; where the name is none, or of
/// another column; and where another template makes the name a number, or not, against the bytes.
NamedTemplates nameBytes(const NamedBytes& named, const std::vector<std::string>& templates,
                         const Neighbours& neighbours);

} // namespace casetable

#endif
