// Linux GUID binding: only the random source and the version-4 layout belong here.
#include <sys/random.h>

#include <cerrno>
#include <cstddef>
#include <cstring>

#include "foundation/guid.h"

namespace DE::detail {

// 16 bytes from getrandom(2) laid out as Data1..Data4, with the version (4) and RFC 4122 variant
// bits set as in the GUIDs CoCreateGuid returns.
bool NewGuid(GUID& guid) {
  unsigned char bytes[16];
  std::size_t filled = 0;
  while (filled < sizeof(bytes)) {
    const ssize_t n = getrandom(bytes + filled, sizeof(bytes) - filled, 0);
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    filled += static_cast<std::size_t>(n);
  }
  std::memcpy(&guid.Data1, bytes, 4);
  std::memcpy(&guid.Data2, bytes + 4, 2);
  std::memcpy(&guid.Data3, bytes + 6, 2);
  std::memcpy(guid.Data4, bytes + 8, 8);
  guid.Data3 = static_cast<decltype(guid.Data3)>((guid.Data3 & 0x0FFF) | 0x4000);
  guid.Data4[0] = static_cast<unsigned char>((guid.Data4[0] & 0x3F) | 0x80);
  return true;
}

}  // namespace DE::detail
