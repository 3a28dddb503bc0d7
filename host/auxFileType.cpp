#include <algorithm>
#include <cstddef>
#include <cstring>
#include <initializer_list>

#include "host/AuxFileInfoInterface.h"

namespace {

bool endsWith(const std::string& text, const char* ending)
{
    const std::size_t size = std::strlen(ending);
    return text.size() >= size && text.compare(text.size() - size, size, ending, size) == 0;
}

bool endsWithOneOf(const std::string& text, std::initializer_list<const char*> endings)
{
    return std::any_of(endings.begin(), endings.end(),
                       [&text](const char* ending) { return endsWith(text, ending); });
}

} // namespace

AuxFileInfoInterface::Type auxFileType(const std::string& path)
{
    if (endsWithOneOf(path, {".txt", ".log", ".dat", ".csv"}))
        return AuxFileInfoInterface::TextFile;
    if (endsWithOneOf(path, {".png", ".jpg", ".jpeg", ".tif", ".tiff"}))
        return AuxFileInfoInterface::ImageFile;
    if (endsWithOneOf(path, {".vtk", ".vtp", ".vtu", ".stl"}))
        return AuxFileInfoInterface::MeshFile;
    return AuxFileInfoInterface::OtherFile;
}
