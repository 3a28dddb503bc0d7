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

void spareMatchedFile(const std::string& output, const std::string& root,
                      const std::function<bool(const std::string& path)>& isMatched)
{
    std::error_code failure;
    const std::filesystem::path file = std::filesystem::canonical(output, failure);
    if (failure)
        return; // There is no such file yet.
    const std::filesystem::path folder = std::filesystem::canonical(root, failure);
    if (failure)
        return;
    if (isMatched(file.lexically_relative(folder).string()))
        throw Failure(ExitCode::OutputFailed,
                      output + ": is one of the matched files, and is not replaced");
}

} // namespace casetable
