#ifndef HOST_AUXFILECOLLECTIONINTERFACE_H
#define HOST_AUXFILECOLLECTIONINTERFACE_H

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "host/Export.h"

/// A read-only collection of auxiliary files, filed by case index and tag.
///
/// Part of the host's data-management library. Implementations hand out copies, so what a caller
/// received stays valid after the collection is gone.
class HOST_API AuxFileCollectionInterface {
public:
    AuxFileCollectionInterface();

    /// True when no file was recorded at all.
    virtual bool isEmpty() const = 0;

    /// Every distinct tag under which a file was recorded.
    virtual std::set<std::string> tags() const = 0;

    /// The paths recorded for case `index` under `tag`, in recording order; empty when there are
    /// none. `index` must be below indexCount().
    virtual std::vector<std::string> filePaths(std::size_t index, const std::string& tag) const = 0;

    /// The highest recorded case index plus one; 0 when the collection is empty.
    virtual std::size_t indexCount() const = 0;

    virtual ~AuxFileCollectionInterface();
};

#endif
