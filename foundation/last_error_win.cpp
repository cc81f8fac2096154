// Windows binding of the last-error value: only calls into the Win32 API go in this file.
#include "foundation/last_error.h"

namespace DE::detail {

void SetLastErrorCode(DWORD code) { SetLastError(code); }

DWORD GetLastErrorCode() { return GetLastError(); }

}  // namespace DE::detail
