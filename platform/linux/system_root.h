// The system root the Linux substitutes read /proc, /sys and /etc under: UTIL_SYSROOT, default
// "/", read at every call, so tests and demonstrations can stand a fixture tree in for the
// running system.
#pragma once

#include <string>

namespace DE::detail::linux_impl {

// `relative` ("proc/sys/kernel/osrelease") below the system root.
std::string UnderSystemRoot(const char* relative);
// Reads at most maxBytes of a small file (a /proc value, os-release); false when it cannot be
// opened.
bool ReadSmallFile(const std::string& path, std::string& content, std::size_t maxBytes = 64 * 1024);
// The first line of such a file, without its line end; false when missing or empty.
bool ReadFirstLine(const std::string& path, std::string& line);

}  // namespace DE::detail::linux_impl
