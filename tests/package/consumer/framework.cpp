#include <host/AuxFileInfoInterface.h>

// Unlike the stand-in, it takes every file for an image.
AuxFileInfoInterface::Type auxFileType(const std::string& /*path*/)
{
    return AuxFileInfoInterface::ImageFile;
}
