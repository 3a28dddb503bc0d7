#include "casetable/system/OutputGuards.h"

#include <filesystem>
#include <system_error>

#include "casetable/system/ExitCode.h"

namespace casetable {

void spareList(const std::string& output, const std::string& list)
{
    std::error_code failure;
    if (list != "-" && std::filesystem::is_regular_file(output, failure) &&
        std::filesystem::equivalent(output, list, failure))
        throw Failure(ExitCode::OutputFailed, output + ": is the list itself, and is not replaced");
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
