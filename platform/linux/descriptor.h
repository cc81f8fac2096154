// An owned file descriptor of the Linux substitutes. Closing keeps errno, so a descriptor can go
// out of scope on a failure path without hiding the error being reported. Linux-only code.
#pragma once

#include <cerrno>

#include "foundation/scoped_handle.h"
#include "platform/linux/system_calls.h"

namespace DE::detail::linux_impl {

struct DescriptorTraits {
  using Handle = int;
  static int Invalid() { return -1; }
  static bool IsValid(int fd) { return fd >= 0; }
  static void Close(int fd) {
    const int saved = errno;
    Sys().close(fd);
    errno = saved;
  }
};

using Descriptor = ScopedHandle<DescriptorTraits>;

}  // namespace DE::detail::linux_impl
