// What the file and folder helpers need from the platform: native paths, the executable's
// path, the user's application-data folder, and system error texts.
#pragma once

#include <filesystem>
#include <string>

#include "UtilPlatform.h"

namespace DE::detail {

// The folder separator the platform writes.
extern const wchar_t kPathSeparator;

// A wide path as the file system takes it (Linux: its UTF-8 form).
std::filesystem::path NativePath(const std::wstring& path);

// The running program's executable; "" when unknown.
std::wstring ExecutablePath();
// The user's application-data folder, without a trailing separator; "" when unknown.
std::wstring UserAppDataFolder();
// A file name below that folder written the platform's way (Linux: backslashes become "/").
std::wstring PlatformRelativeName(const std::wstring& name);
// The system's text for a Win32 code, trailing line breaks removed; "" when it has none.
std::wstring SystemErrorText(DWORD code);

}  // namespace DE::detail
