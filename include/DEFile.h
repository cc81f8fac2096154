// Files and folders: existence, creating and deleting folder trees, the program's folder, the
// user's application-data folder, and system error texts.
//
// Narrow paths are in the ANSI code page and behave exactly as their wide forms. On Linux a path
// is used as given, in UTF-8 (a backslash is an ordinary character there), except where a
// function below says otherwise. Nothing here throws.
#pragma once

#include <string>

#include "UtilExport.h"
#include "UtilPlatform.h"

namespace DE {

// True when the path names an existing file; false for a folder, a missing path or "".
UTIL_API bool FileExists(const std::string& path);
UTIL_API bool FileExists(const std::wstring& path);

// Creates the folder and every missing folder above it. True when the path is a folder
// afterwards (also when it already was); false for "" or when a part cannot be made (for
// example because a file stands in the way).
UTIL_API bool ForceDirectories(const std::string& path);
UTIL_API bool ForceDirectories(const std::wstring& path);

// Deletes the folder with everything below it. True when it existed as a folder and is gone;
// false when it was not a folder or something below could not be deleted (what could be deleted
// is gone then).
UTIL_API bool DeleteDeepDirectory(const std::string& path);
UTIL_API bool DeleteDeepDirectoryW(const std::wstring& path);

// The folder of the running program's executable, ending with a separator ("\" on Windows,
// "/" on Linux); "" when it cannot be found. This is the host's folder, also when called from
// the library, so configuration beside the host executable is found from it.
UTIL_API std::string GetCurrentPathA();
UTIL_API std::wstring GetCurrentPathW();

// A file below the current user's application-data folder: the folder (Windows: CSIDL_APPDATA,
// e.g. "C:\Users\<user>\AppData\Roaming"; Linux: $XDG_DATA_HOME when it is an absolute path,
// else $HOME/.local/share) followed by fileName, with a separator put between them when
// fileName does not start with one. On Linux backslashes in fileName become "/", so names
// written for Windows ("\log\cookie_cur.txt") land in the same place below the folder. The
// folder is not created. "" when the folder cannot be found.
UTIL_API std::wstring GetUserAppdataFullFile(const std::wstring& fileName);
UTIL_API std::string GetUserAppdataFullFile(const std::string& fileName);

// The system's text for a Win32 error code, without the trailing line break. Windows:
// FormatMessageW's text in the user's language. Linux: the C library's text (strerror) for the
// errno value the code corresponds to (ERROR_FILE_NOT_FOUND 2: ENOENT's "No such file or
// directory"; ERROR_SHARING_VIOLATION 32: EBUSY's text; 0: "Success"). A code with no text
// gives "Unknown error <code>" on both.
UTIL_API std::wstring SysErrorMessageW(DWORD code);

}  // namespace DE
