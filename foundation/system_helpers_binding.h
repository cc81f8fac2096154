// Platform operations under the process and token helpers that have shared logic around them.
#pragma once

#include "UtilPlatform.h"

namespace DE::detail {

// Enables or disables `privilege` (not null, not empty) in the process token; returns 0 or the
// Win32 error code. Windows: AdjustTokenPrivileges (also sets the thread's last error). Linux:
// see SetTokenPrivilege in DESystem.h.
DWORD AdjustPrivilege(const wchar_t* privilege, bool enable);

}  // namespace DE::detail
