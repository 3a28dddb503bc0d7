#ifndef CASETABLE_DISTRIBUTING_MESSAGES_H
#define CASETABLE_DISTRIBUTING_MESSAGES_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "casetable/listing/Pieces.h"
#include "casetable/running/Run.h"
#include "casetable/system/ExitCode.h"

namespace casetable {

class ByteReader;
class ByteWriter;

// What processes tell each other. Each has write(), and read(), which throws BrokenBytes.

/// What a message is. All go to the first process or come from it, but results.
enum class MessageKind : unsigned char {
    Ready,
    Begin,
    Piece,
    Listed,
    Seen,
    Failed,
    Result,
    Over,
    ShowSights, ///< To a process that has not seen the same: it is to send what it has seen.
    Sights,
};

/// From a process that has divided the source. Takes the same few bytes however much the process
/// has seen, since the first gets it from all.
struct Ready {
    std::string version; ///< Of the program.
    std::string machine;
    std::uint64_t options = 0; ///< A hash of what its options say, as hashOf() gives it.
    std::size_t pieces = 0;
    std::uint64_t sights = 0; ///< A hash of what it has seen, as hashOf() gives it.

    void write(ByteWriter& writer) const;
    void read(ByteReader& reader);
};

/// From a process that is asked for it: all that it has seen.
struct Sights {
    std::string machine;
    std::vector<Sight> sights;

    void write(ByteWriter& writer) const;
    void read(ByteReader& reader);
};

/// A hash of all that must be the same for every process: of the options, with the texts of the
/// templates that were read from files. The number of jobs may differ, and the sights show the
/// root.
std::uint64_t hashOf(Options options);

/// A hash of what a process has seen.
std::uint64_t hashOf(const std::vector<Sight>& sights);

/// The answer to that.
struct Begin {
    bool showsRemarks = false;  ///< Whether there will be remarks, for which more is counted.
    bool showsProgress = false; ///< Whether it is wanted to be told what is seen.

    void write(ByteWriter& writer) const;
    void read(ByteReader& reader);
};

/// From a process that has listed a piece, and will list another.
struct Listed {
    std::size_t piece = 0;
    PieceReport report;

    void write(ByteWriter& writer) const;
    void read(ByteReader& reader);
};

/// The folders and files that a process has met so far.
struct Seen {
    std::size_t folders = 0;
    std::size_t files = 0;

    void write(ByteWriter& writer) const;
    void read(ByteReader& reader);
};

/// From a process that cannot go on.
struct Failed {
    std::optional<std::size_t> piece; ///< In which it failed; none before the first or on a signal.
    PieceReport report;               ///< As far as that piece came.
    ExitCode code = ExitCode::ImportFailed;
    std::string message;
    std::string excerpt;
    int signal = 0; ///< That has interrupted it; otherwise 0.
    std::string machine;

    void write(ByteWriter& writer) const;
    void read(ByteReader& reader);
};

/// What the exception that is being handled means, without the piece and the machine.
Failed presentFailure();

/// What some processes have imported, with the globs of the selection that have matched.
std::string resultMessage(ImportedFiles&& files, const Selection& selection);

/// Merges such a message, of a run with the same options, into `all`.
void mergeResult(ByteReader& reader, const Options& options, ImportedFiles& all);

/// The bytes of a message; `content` is one of those above.
template <class Content> std::string messageOf(MessageKind kind, const Content& content);
std::string messageOf(MessageKind kind);

/// A piece that a process is to list, or none if there are no more.
std::string pieceMessage(std::optional<std::size_t> piece);
std::optional<std::size_t> readPiece(ByteReader& reader);

} // namespace casetable

#endif
