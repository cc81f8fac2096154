// Where the configuration readers look: the folder of this library, of the host executable, and
// the library's application-data folder. Narrow paths as the XML wrapper opens them (Windows: the
// ANSI code page; Linux: UTF-8, the bytes the file helpers give file names).
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
// The folder "Util" below the user's application-data folder of the file helpers (Windows:
// %APPDATA%\Util; Linux: $XDG_DATA_HOME/Util, or ~/.local/share/Util when XDG_DATA_HOME is unset
// or not absolute); "" when that folder is unknown. Nothing is created.
std::string LibraryAppDataFolder();

// A wide path in the narrow form above (the platform binding).
std::string NarrowPath(const std::wstring& path);
// The folder part of a module's file name; "" when the name is empty or kMaxModulePath bytes or
// longer.
std::string ModuleFileFolder(const std::string& file);
// folder + separator + each part, joined with the platform's separator; "" when folder is "".
std::string JoinPath(const std::string& folder, std::initializer_list<const char*> parts);
// The text before the last separator ('\\' or '/') of a file name; "" when it has none.
std::string FolderOf(const std::string& file);

}  // namespace DE::detail
