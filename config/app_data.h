// The library's per-user application-data folder, where downloaded configuration is cached.
#pragma once

#include <string>

namespace DE::detail {

// Windows: %APPDATA%\Util (the roaming application-data folder of the calling user). Linux:
// $XDG_DATA_HOME/Util, or ~/.local/share/Util when XDG_DATA_HOME is unset or not absolute.
// Narrow (Windows: ANSI code page); "" when the base folder is unknown. Nothing is created.
std::string LibraryAppDataFolder();

}  // namespace DE::detail
