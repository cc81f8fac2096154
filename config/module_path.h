// Where the configuration readers look: the folder of this library and of the host executable.
// Narrow paths as the XML wrapper opens them (Windows: ANSI code page; Linux: the file name's bytes).
#pragma once

#include <initializer_list>
#include <string>

namespace DE::detail {

// The longest module file name the readers accept, in bytes with the terminating NUL (MAX_PATH),
// on both platforms alike.
constexpr std::size_t kMaxModulePath = 260;

// Folder of the loaded library itself (Util.dll / libUtil.so), without a trailing separator;
// "" when it cannot be found or its file name is kMaxModulePath bytes or longer.
std::string LibraryFolder();
// Folder of the host executable, under the same rules.
std::string HostExecutableFolder();
// The platform's folder separator: '\\' on Windows, '/' on Linux.
char PathSeparator();

// folder + separator + each part, joined with the separator; "" when folder is "".
std::string JoinPath(const std::string& folder, std::initializer_list<const char*> parts);
// The text before the last separator ('\\' or '/') of a file name; "" when it has none.
std::string FolderOf(const std::string& file);

}  // namespace DE::detail
