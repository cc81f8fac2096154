// Platform printf bindings behind DE::FormatString.
#pragma once

#include <cstdarg>
#include <cstddef>

namespace DE::detail {

// Formats into `buf` of `cap` units. Returns the output's length when it is shorter than `cap`
// (then `buf` holds it NUL-terminated); -1 when it is `cap` units or longer, or the format fails.
// The narrow form reads the format as the platform's C library does. The wide form reads it the
// Windows way on every platform: %s and %c take wide arguments, %S and %C narrow ones (as do the
// "h" forms; the "l" and "w" forms are wide).
int FormatNarrow(char* buf, std::size_t cap, const char* fmt, va_list args);
int FormatWide(wchar_t* buf, std::size_t cap, const wchar_t* fmt, va_list args);

}  // namespace DE::detail
