// Case mapping through the C library's single-byte toupper/tolower, for narrow and wide text.
#include <cctype>
#include <cstdint>
#include <string>
#include <type_traits>

#include "DEString.h"

namespace DE {
namespace {

// Wide units beyond 0..255 are outside what the single-byte functions accept and stay unchanged,
// so in the default "C" locale only ASCII letters change in either form.
template <typename Text>
Text MapUnits(Text s, int (*map)(int)) {
  for (auto& unit : s) {
    using Unit = typename Text::value_type;
    const auto code = static_cast<std::uint32_t>(static_cast<std::make_unsigned_t<Unit>>(unit));
    if (code <= 0xFF) unit = static_cast<Unit>(map(static_cast<int>(code)));
  }
  return s;
}

int ToUpper(int c) { return std::toupper(c); }
int ToLower(int c) { return std::tolower(c); }

}  // namespace

std::string UpperCase(const std::string& s) { return MapUnits(s, ToUpper); }
std::wstring UpperCase(const std::wstring& s) { return MapUnits(s, ToUpper); }
std::string LowerCase(const std::string& s) { return MapUnits(s, ToLower); }
std::wstring LowerCase(const std::wstring& s) { return MapUnits(s, ToLower); }

}  // namespace DE
