#ifndef TESTS_CASETABLE_SUPPORT_WHOLEIMPORT_H
#define TESTS_CASETABLE_SUPPORT_WHOLEIMPORT_H

#include <string>
#include <vector>

#include "casetable/importing/CaseTable.h"
#include "casetable/importing/Reading.h"
#include "crawler/AuxFileIdentifierValidator.h"
#include "crawler/FolderCrawler.h"
#include "crawler/MetadataFileCrawler.h"

namespace casetable {
namespace tests {

/// An import with one importer of the module for all files, which tells plainly what an import in
/// shards must come to.
class WholeImport {
public:
    /// Imports the result of a finished walk, and throws as Import does.
    WholeImport(FolderCrawler& crawler, const Reading& reading,
                const std::vector<AuxFileIdentifier>& identifiers);

    /// With all files of the walk and their matches.
    const MetadataFileCrawler& importer() const { return importer_; }

    /// The cases, as the importer extracted them.
    const CaseTable& table() const { return table_; }

private:
    MetadataFileCrawler importer_;
    CaseTable table_;
};

} // namespace tests
} // namespace casetable

#endif
