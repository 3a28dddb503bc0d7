#ifndef CASETABLE_SUGGESTING_MIXEDFILES_H
#define CASETABLE_SUGGESTING_MIXEDFILES_H

#include <string>
#include <utility>

#include "crawler/CrawlerBasicImporterParser.h"

namespace casetable {

/// Files of one case that may be of different runs. Either pair is empty where there are none, or
/// too few to say so.
struct MixedFiles {
    /// Two files of one name, in different folders: different runs must be mixed.
    std::pair<std::string, std::string> sameName;
    /// Otherwise two files of one folder whose names differ only where values may stand: different
    /// runs, or parts of one.
    std::pair<std::string, std::string> likeNames;
};

/// Looks for such files in the cases of `parser`, whose markers must be applied.
MixedFiles mixedFiles(const CrawlerBasicImporterParser& parser);

} // namespace casetable

#endif
