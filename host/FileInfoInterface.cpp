#include "host/FileInfoInterface.h"

FileInfoInterface::~FileInfoInterface() = default;
