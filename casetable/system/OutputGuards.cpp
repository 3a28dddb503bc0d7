#include "casetable/system/OutputGuards.h"

#include <filesystem>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

#include "casetable/system/ExitCode.h"

namespace casetable {

void spareInput(const std::string& output, const std::string& input, const std::string& role)
{
    struct stat written = {};
    struct stat read = {};
    const bool readsSome =
        input == "-" ? ::fstat(STDIN_FILENO, &read) == 0 : ::stat(input.c_str(), &read) == 0;
    if (readsSome && ::stat(output.c_str(), &written) == 0 && S_ISREG(written.st_mode) &&
        written.st_dev == read.st_dev && written.st_ino == read.st_ino)
        throw Failure(ExitCode::OutputFailed, output + ": is " + role + ", and is not replaced");
}

std::string pathBelow(const std::string& root, const std::string& output)
{
    std::error_code failure;
    const std::filesystem::path file = std::filesystem::canonical(output, failure);
    if (failure)
        return "";
    const std::filesystem::path folder = std::filesystem::canonical(root, failure);
    return failure ? "" : file.lexically_relative(folder).string();
}

void spareMatchedFile(const std::string& output, bool isMatched)
{
    if (isMatched)
        throw Failure(ExitCode::OutputFailed,
                      output + ": is one of the matched files, and is not replaced");
}

} // namespace casetable
