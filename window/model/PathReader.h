#ifndef WINDOW_MODEL_PATHREADER_H
#define WINDOW_MODEL_PATHREADER_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "casetable/explaining/Unmatched.h"
#include "casetable/importing/Reading.h"
#include "casetable/templates/Matcher.h"

namespace casetable {

/// What the bytes of a path are to a reading.
struct PathPiece {
    enum class Kind {
        Value,  ///< What a column read.
        Quiet,  ///< A marker, or fixed text of a template.
        LeftOut ///< No bytes: an optional part would stand here.
    };

    Kind kind;
    std::size_t begin; ///< In bytes.
    std::size_t length;
    std::size_t column; ///< Of a value, its index among Reading::patterns().
};

/// How one path is read.
struct PathRead {
    bool isMatched = false;
    std::vector<PathPiece> pieces; ///< In no order; bytes in none are what wildcards fit.
    std::size_t templateIndex = 0; ///< Of the template that fits, where there are templates.
    std::string reason; ///< Why it is unmatched, in half a sentence of bytes; else empty.
    /// Of one that no template fits: so many bytes fit a beginning.
    std::optional<std::size_t> fitting;
};

/// Reads single paths as an import does, for those that are seen. Used by one thread.
class PathReader {
public:
    /// There must be a marker or a template.
    explicit PathReader(std::shared_ptr<const Reading> reading);

    PathRead read(const std::string& path);

private:
    PathRead readByTemplates(const std::string& path, const TemplateList& templates);
    PathRead readByMarkers(const std::string& path);

    const std::shared_ptr<const Reading> reading_;
    const std::unique_ptr<MetadataInfoProviderInterface> values_; // By markers.
    std::vector<Matcher> matchers_;                               // By templates.
};

} // namespace casetable

#endif
