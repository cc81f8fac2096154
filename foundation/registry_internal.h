// Helpers shared by the files of DE::Registry: the path rule and the type mapping.
#pragma once

#include <string>

#include "DERegistry.h"

namespace DE::detail {

// The path without its leading backslash; relative is false when there was one.
std::wstring StripPath(const std::wstring& path, bool& relative);
// REG_SZ -> rdString, REG_EXPAND_SZ -> rdExpandString, REG_DWORD -> rdInteger,
// REG_BINARY -> rdBinary, anything else -> rdUnknown.
RegDataType DataTypeOf(DWORD registryType);
// The reverse; rdUnknown -> REG_NONE.
DWORD RegistryTypeOf(RegDataType dataType);

// The predefined key named exactly (upper case, e.g. "HKEY_LOCAL_MACHINE"); null for no name.
HKEY RootKeyByName(const std::wstring& upperName);
// The full name of a predefined key; "" for another handle.
std::wstring RootKeyName(HKEY key);

}  // namespace DE::detail
