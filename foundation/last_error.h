// The calling thread's last Win32 error code, as the library's bindings leave it.
//
// Windows: the system's own value (GetLastError / SetLastError), so codes set by any Win32 call
// are seen too. Linux: a thread-local value that the substitutes set with the Win32 code of
// their failure (see platform/linux/win32_error.h); it starts at 0 on every thread.
#pragma once

#include "UtilPlatform.h"

namespace DE::detail {

void SetLastErrorCode(DWORD code);
DWORD GetLastErrorCode();

}  // namespace DE::detail
