// Linux binding of the last-error value: only Linux-specific code goes in this file.
#include "foundation/last_error.h"

namespace DE::detail {
namespace {

thread_local DWORD lastErrorCode = 0;

}  // namespace

void SetLastErrorCode(DWORD code) { lastErrorCode = code; }

DWORD GetLastErrorCode() { return lastErrorCode; }

}  // namespace DE::detail
