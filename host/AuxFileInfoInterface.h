#ifndef HOST_AUXFILEINFOINTERFACE_H
#define HOST_AUXFILEINFOINTERFACE_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "host/Export.h"

/// One crawled file, as the host's importer framework sees it.
class HOST_API AuxFileInfoInterface {
public:
    /// The kind of auxiliary file. Produced by auxFileType() and passed on without interpretation.
    enum Type : std::uint32_t { OtherFile = 0, TextFile = 1, ImageFile = 2, MeshFile = 3 };

    AuxFileInfoInterface();
    virtual ~AuxFileInfoInterface();

    /// The file's path, relative to the crawled root, byte for byte.
    virtual std::string filePath() const = 0;

    /// True when the path matched the complete list of metadata patterns.
    virtual bool isMatched() const = 0;

    /// Assigns the index, from 0, of the case that the file belongs to.
    virtual void setCaseIndex(std::size_t index) = 0;

    /// The index last assigned; meaningful only while isMatched() is true.
    virtual std::size_t caseIndex() const = 0;

    /// A descriptive text of the file; may be empty.
    virtual std::string label() const = 0;

    /// The kind of file that auxFileType() recognised in the path.
    virtual Type type() const = 0;
};

/// The kind of auxiliary file that the host recognises in `path`.
///
/// The module calls it once for each path that a parser takes in, from the thread that appends the
/// path. It stands in an object file of its own: a host that defines its own function of this
/// signature replaces the stand-in at link time.
HOST_API AuxFileInfoInterface::Type auxFileType(const std::string& path);

#endif
