// Trimming of the space character (only 0x20; tabs, CR and LF are never trimmed).
#include <string>

#include "DEString.h"

namespace DE {
namespace {

template <typename Char>
constexpr Char kSpace = static_cast<Char>(' ');

template <typename Text>
Text TrimLeftCopy(const Text& s) {
  const auto first = s.find_first_not_of(kSpace<typename Text::value_type>);
  return first == Text::npos ? Text() : s.substr(first);
}

template <typename Text>
Text TrimRightCopy(const Text& s) {
  const auto last = s.find_last_not_of(kSpace<typename Text::value_type>);
  return last == Text::npos ? Text() : s.substr(0, last + 1);
}

}  // namespace

std::string TrimSPLeft(const std::string& s) { return TrimLeftCopy(s); }
std::wstring TrimSPLeft(const std::wstring& s) { return TrimLeftCopy(s); }
std::string TrimSPRight(const std::string& s) { return TrimRightCopy(s); }
std::wstring TrimSPRight(const std::wstring& s) { return TrimRightCopy(s); }
std::string TrimSP(const std::string& s) { return TrimSPRight(TrimSPLeft(s)); }
std::wstring TrimSP(const std::wstring& s) { return TrimSPRight(TrimSPLeft(s)); }

void LTrim(std::string& s) {
  std::string::size_type n = 0;
  while (n < s.size() && s[n] == ' ') ++n;
  s.erase(0, n);
}

// The scan stops at the first character and never removes it, so "   " keeps one space. Callers
// depend on this, so it stays.
void RTrim(std::string& s) {
  std::string::size_type n = s.size();
  while (n > 1 && s[n - 1] == ' ') --n;
  s.resize(n);
}

void Trim(std::string& s) {
  LTrim(s);
  RTrim(s);
}

// The same rule as TrimSP (an empty input comes back empty either way).
std::string StringProc::StringTrim(const std::string& s) { return TrimSP(s); }
std::wstring StringProc::WStringTrim(const std::wstring& s) { return TrimSP(s); }

}  // namespace DE
