// The "ANSI" code page of the Linux build: a legacy page converted through iconv.
//
// The page is chosen once per process: UTIL_ANSI_CODEPAGE (an iconv name such as "CP1252",
// "CP936", "GB18030", or a bare Windows number such as "1252"), else the code set of the
// environment's locale. A plain-ASCII locale ("C", "POSIX") means CP1252, the page Windows and
// Wine use for it. A UTF-8 setting bypasses iconv.
//
// Undecodable bytes follow Windows: in a single-byte page a byte with no character maps to the
// code point of the same number (CP1252's 0x81 gives U+0081); in a multi-byte page it gives "?".
// Characters the page cannot hold are written as one "?" per UTF-16 unit ("??" past U+FFFF). Windows' "best
// fit" look-alikes (such as U+0100 to "A") are not reproduced: those characters become "?" too.
#pragma once

#include <cstddef>
#include <string>

namespace DE::detail::linux_impl {

class AnsiCodePage {
 public:
  // The process-wide page, configured on first use.
  static const AnsiCodePage& Get();

  explicit AnsiCodePage(std::string iconvName);

  const std::string& Name() const { return name_; }
  // A legacy multi-byte page (932, 936, 949, 950, ...): what Windows reports as SM_DBCSENABLED.
  bool IsDoubleByte() const { return !utf8_ && !singleByte_; }
  std::wstring Decode(const char* text, std::size_t length) const;
  std::string Encode(const wchar_t* text, std::size_t length) const;

 private:
  std::string name_;
  bool utf8_ = false;
  bool singleByte_ = true;
};

// The iconv name for a UTIL_ANSI_CODEPAGE setting or a locale code set ("1252" -> "CP1252").
std::string NormalizeCodePageName(const std::string& setting);

}  // namespace DE::detail::linux_impl
