#ifndef WINDOW_MODEL_SETUP_H
#define WINDOW_MODEL_SETUP_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "casetable/importing/Reading.h"
#include "casetable/listing/Source.h"
#include "casetable/options/Options.h"

namespace casetable {

/// What the user has set in the window, as it was typed: it need not be valid. A plain value, so
/// that a stack of them is the history of changes. All texts are bytes.
struct Setup {
    /// By what paths are read.
    enum class By { Templates, Markers };

    struct Marker {
        std::string text;
        bool isNumber = false;
    };

    struct AuxRow {
        std::string wildcard;
        std::string tag;
    };

    std::string root;                ///< A folder; empty for none yet, or if there is a list.
    std::optional<std::string> list; ///< The file of a list of paths.
    bool nullSeparated = false;
    std::vector<std::string> excluded; ///< Globs.
    bool hidden = false;
    std::optional<std::size_t> maxDepth;
    bool follow = false;
    bool keepGoing = false;

    By by = By::Templates;
    std::vector<std::string> templates; ///< One for each line of the editor; blank ones too.
    std::vector<Marker> markers;        ///< One for each row; those without a text do not count.
    std::vector<AuxRow> auxRows;        ///< Those without a wildcard and a tag do not count.
    std::vector<std::string> sort;      ///< Values of --sort.

    /// Whether there is a root or a list.
    bool hasSource() const { return !root.empty() || list.has_value(); }

    /// Whether there is a template or a marker that counts.
    bool hasReading() const;
};

bool operator==(const Setup& left, const Setup& right);
inline bool operator!=(const Setup& left, const Setup& right)
{
    return !(left == right);
}

/// Whether both take the same files.
bool haveSameSource(const Setup& left, const Setup& right);

/// `setup` with the source of `source`.
Setup withSourceOf(Setup setup, const Setup& source);

/// `setup`, or where that has no root and no list, the same for those of `open`: with the files of
/// it that are open, where `setup` does not itself say which ones it wants.
Setup forOpenFiles(Setup setup, const Setup& open);

/// A setup that was read from the words of a command line.
struct ReadSetup {
    Setup setup;
    /// The options that were typed, as in "--output", but that say nothing about what is read.
    std::vector<std::string> leftOut;
};

/// Reads the arguments of a casetable command line, without the program's name. Looks at no files
/// but those of templates. Throws Failure with ExitCode::WrongUsage as parseOptions() does; but
/// what a template, a glob or an identifier says is not judged.
ReadSetup readSetup(const std::vector<std::string>& arguments);

/// The arguments that mean the setup: readSetup() reads the same from them, but for what does not
/// count, and casetable gives the table of it where all is valid.
std::vector<std::string> arguments(const Setup& setup);

/// "casetable" and the arguments as one line for a shell.
std::string commandLine(const Setup& setup);

/// What the setup means with the arguments `more`, which are options. Throws Failure as
/// parseOptions() does: there must be a source and a reading, too.
Options checked(const Setup& setup, const std::vector<std::string>& more = {});

/// What the setup means as far as it says which files are taken; there must be a source. Throws
/// Failure as parseOptions() does.
Source checkedSource(const Setup& setup);

} // namespace casetable

#endif
