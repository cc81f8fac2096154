// Opening the files the XML wrapper reads and writes, behind one operation per platform.
#pragma once

#include <cstdio>
#include <string>

namespace DE::detail {

// fopen(path, mode) with the narrow path as the platform's C run-time takes it. A folder never
// opens (Windows refuses it; Linux would open it for reading, so it is refused there too).
// Null on failure.
std::FILE* OpenXmlFile(const std::string& path, const char* mode);

}  // namespace DE::detail
