#include "benchmarks/Campaign.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace campaign {

namespace {

const char* const fileNames[filesPerCase] = {
    "flow.vtu",           "surface.vtu",         "mesh.vtu",   "volume-averaged-turbulence.vtu",
    "probe_upper_01.dat", "wake_probe_0001.dat", "forces.dat", "restart.dat",
    "solver.log",         "residuals.csv"};

// Wings A and B keep a folder a parameter, C joins two, D stands a folder deeper.
const char* const folderFormats[] = {"wingA/Mach%.2f/AoA%.1f/Re%.1fe6/run_%06zu/",
                                     "wingB/Mach%.2f/AoA%.1f/Re%.1fe6/run_%06zu/",
                                     "wingC/Mach%.2f_AoA%.1f/Re%.1fe6/run_%06zu/",
                                     "wingD/buffet-onset/Mach%.2f/AoA%.1f/Re%.1fe6/run_%06zu/"};

std::string folderOf(std::size_t caseNumber)
{
    const std::size_t reynolds = caseNumber / 5 % 5;
    const std::size_t angle = caseNumber / 25 % 20;
    const std::size_t wing = caseNumber / 500 % 4;
    const std::size_t mach = caseNumber / 2000;
    char folder[100];
    static_cast<void>(std::snprintf(folder, sizeof folder, folderFormats[wing],
                                    0.3 + 0.01 * static_cast<double>(mach),
                                    -5.0 + 0.5 * static_cast<double>(angle),
                                    5.0 + 1.5 * static_cast<double>(reynolds), caseNumber));
    return folder;
}

[[noreturn]] void fail(const std::string& path)
{
    throw std::system_error(errno, std::generic_category(), path);
}

void makeFolders(const std::string& root, const std::string& folder)
{
    for (std::size_t end = folder.find('/'); end != std::string::npos;
         end = folder.find('/', end + 1)) {
        const std::string path = root + "/" + folder.substr(0, end);
        if (::mkdir(path.c_str(), 0777) != 0 && errno != EEXIST)
            fail(path);
    }
}

} // namespace

const char* const pathTemplate =
    "**Mach{Mach:number}[_][/]AoA{AoA:number}/Re{Re:number}/run_{run_:number}/*";

std::vector<std::string> paths(std::size_t count)
{
    std::vector<std::string> paths;
    paths.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        paths.push_back(folderOf(i / filesPerCase) + fileNames[i % filesPerCase]);
    return paths;
}

void makeTree(const std::string& root, std::size_t count)
{
    if (::mkdir(root.c_str(), 0777) != 0)
        fail(root);
    std::string lastFolder;
    for (const std::string& path : paths(count)) {
        const std::string folder = path.substr(0, path.rfind('/') + 1);
        if (folder != lastFolder)
            makeFolders(root, folder);
        lastFolder = folder;
        const std::string file = root + "/" + path;
        const int descriptor = ::open(file.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0666);
        if (descriptor < 0)
            fail(file);
        ::close(descriptor);
    }
}

std::vector<MetadataPattern> patterns()
{
    return {{"Mach", MetadataPattern::NumberValue},
            {"AoA", MetadataPattern::NumberValue},
            {"Re", MetadataPattern::NumberValue},
            {"run_", MetadataPattern::NumberValue}};
}

std::vector<AuxFileIdentifier> identifiers()
{
    return {{"*.vtu", "mesh"}, {"*probe*.dat", "probe"}};
}

} // namespace campaign
