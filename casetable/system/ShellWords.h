#ifndef CASETABLE_SYSTEM_SHELLWORDS_H
#define CASETABLE_SYSTEM_SHELLWORDS_H

#include <string>

namespace casetable {

/// `bytes` as one word of a shell's command line, quoted such that every byte arrives: for any
/// shell where they can be shown as they are, otherwise for bash and zsh.
std::string shellWord(const std::string& bytes);

} // namespace casetable

#endif
