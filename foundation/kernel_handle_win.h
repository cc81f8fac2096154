// An owned Windows kernel handle (process, thread, job, pipe, snapshot, token). Windows-only code.
#pragma once

#include "UtilPlatform.h"
#include "foundation/scoped_handle.h"

namespace DE::detail {

struct KernelHandleTraits {
  using Handle = HANDLE;
  static HANDLE Invalid() { return nullptr; }
  // Some calls answer "none" with null, others with INVALID_HANDLE_VALUE.
  static bool IsValid(HANDLE handle) { return handle != nullptr && handle != INVALID_HANDLE_VALUE; }
  static void Close(HANDLE handle) { CloseHandle(handle); }
};

using KernelHandle = ScopedHandle<KernelHandleTraits>;

}  // namespace DE::detail
