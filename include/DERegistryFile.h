// Import and export of registry text files ("Windows Registry Editor Version 5.00" .reg files,
// UTF-16LE with a byte-order mark), for seeding and inspecting the registry.
#pragma once

#include <string>

#include "UtilExport.h"
#include "UtilPlatform.h"

namespace DE {

// Writes root\path and everything below it to fileName (replaced). Returns 0 or a Win32 code.
UTIL_API int ExportRegistryFile(HKEY root, const std::wstring& path, const std::wstring& fileName);
// Applies fileName's keys and values (creating keys, "-" deleting). Returns 0, a Win32 code of
// the first failed step, or ERROR_INVALID_DATA (13) when the text is not a registry file (nothing
// is applied then). An unknown root name gives ERROR_INVALID_PARAMETER (87) after the rest is applied.
UTIL_API int ImportRegistryFile(const std::wstring& fileName);

// The same as text (no byte-order mark): the file's content for root\path.
UTIL_API int ExportRegistryText(HKEY root, const std::wstring& path, std::wstring& text);
// Applies .reg text as ImportRegistryFile applies a file's.
UTIL_API int ImportRegistryText(const std::wstring& text);

}  // namespace DE
