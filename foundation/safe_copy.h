// Bounded C-string copy with the strcpy_s contract, for the functions that fill a caller's buffer.
//
// One implementation on both platforms: the C run-time's strcpy_s would call the invalid-parameter
// handler on failure (which ends the process under the newer run-times), while callers here only
// want a failure result they can log.
#pragma once

#include <cstring>
#include <string>

namespace DE::detail {

// Copies `src` up to its first NUL, NUL included, into `dst` of `size` bytes. Returns false when
// `dst` is null, `size` is not positive or the text does not fit; then, if `dst` is non-null and
// `size` is positive, dst[0] is set to '\0' (as strcpy_s does).
inline bool SafeCopy(char* dst, int size, const std::string& src) {
  if (dst == nullptr || size <= 0) return false;
  const std::size_t length = std::strlen(src.c_str());
  if (length >= static_cast<std::size_t>(size)) {
    dst[0] = '\0';
    return false;
  }
  std::memcpy(dst, src.c_str(), length + 1);
  return true;
}

}  // namespace DE::detail
