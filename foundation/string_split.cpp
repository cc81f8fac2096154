// Cutting text at separators, splitting at delimiter sets and replacing substrings.
//
// Replace with an empty `from` and no limit would insert forever (the search resumes after each
// insertion, which is always another match); that case is bounded like a count of -1.
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "DEString.h"

namespace DE {
namespace {

template <typename Text>
bool StartsWithAt(const Text& s, typename Text::size_type pos, const Text& prefix) {
  return s.size() - pos >= prefix.size() && s.compare(pos, prefix.size(), prefix) == 0;
}

template <typename Text>
Text SeparateLeftOf(const Text& s, const Text& sep) {
  if (sep.empty()) return Text();
  const auto pos = s.find(sep);
  return pos == Text::npos ? s : s.substr(0, pos);
}

template <typename Text>
Text SeparateRightOf(const Text& s, const Text& sep) {
  if (sep.empty()) return s;
  const auto pos = s.find(sep);
  return pos == Text::npos ? s : s.substr(pos + sep.size());
}

// SeparateLeft, leaving SeparateRight in `src`; but when that would equal the source (no
// separator, empty source or empty separator) the source is emptied, so a caller looping on
// FetchBin always ends. One search serves both halves.
template <typename Text>
Text FetchBinOf(Text& src, const Text& sep) {
  const auto pos = sep.empty() ? Text::npos : src.find(sep);
  if (pos == Text::npos) {
    Text field = sep.empty() ? Text() : std::move(src);
    src.clear();
    return field;
  }
  Text field = src.substr(0, pos);
  src.erase(0, pos + sep.size());
  return field;
}

template <typename Text>
Text FetchTrimmed(Text& src, const Text& sep) {
  Text field = TrimSP(FetchBinOf(src, sep));
  src = TrimSP(src);
  return field;
}

// One character at a time: a separator ends the field only outside quotes; a quote character
// toggles the state and is kept. A multi-character quote is only tested as a prefix, one
// character being consumed per step.
template <typename Text>
Text FetchQuoted(Text& src, const Text& sep, const Text& quote) {
  if (sep.empty()) return Text();
  Text field;
  bool inQuotes = false;
  typename Text::size_type pos = 0;
  while (pos < src.size()) {
    if (!inQuotes && StartsWithAt(src, pos, sep)) {
      src.erase(0, pos + sep.size());
      return field;
    }
    const bool atQuote = StartsWithAt(src, pos, quote);
    if (atQuote) inQuotes = !inQuotes;
    field.push_back(src[pos]);
    ++pos;
  }
  src.clear();
  return field;
}

// "\r\n" and "\n\r" are one break; "\r\r" and "\n\n" are two.
template <typename Text>
Text FetchLineOf(Text& src) {
  using Char = typename Text::value_type;
  const Char cr = static_cast<Char>('\r');
  const Char lf = static_cast<Char>('\n');
  const Char breaks[] = {cr, lf, Char()};
  const auto i = src.find_first_of(breaks);
  if (i == Text::npos) {
    Text line;
    line.swap(src);
    return line;
  }
  Text line = src.substr(0, i);
  auto end = i + 1;
  if (end < src.size() && (src[end] == cr || src[end] == lf) && src[end] != src[i]) ++end;
  src.erase(0, end);
  return line;
}

template <typename Text>
void SplitBySet(const Text& s, const Text& delims, std::vector<Text>& out) {
  typename Text::size_type pos = 0;
  for (;;) {
    const auto end = s.find_first_of(delims, pos);
    if (end == Text::npos) {
      out.push_back(s.substr(pos));
      return;
    }
    out.push_back(s.substr(pos, end - pos));
    pos = s.find_first_not_of(delims, end);
    if (pos == Text::npos) return;
  }
}

// The count is made before the limit is tested, so a limit of 0 still allows one replacement.
// -1 limits to the original length; other negative counts, sign-extended to 64 bits, are
// effectively unlimited.
template <typename Text>
Text ReplaceUpTo(Text s, const Text& from, const Text& to, int count) {
  std::uint64_t limit = static_cast<std::uint64_t>(static_cast<std::int64_t>(count));
  if (count == -1 || (from.empty() && count < 0)) limit = s.size();
  std::uint64_t done = 0;
  typename Text::size_type pos = 0;
  for (;;) {
    const auto match = s.find(from, pos);
    if (match == Text::npos) break;
    s.replace(match, from.size(), to);
    if (++done >= limit) break;
    pos = match + to.size();
  }
  return s;
}

}  // namespace

std::string SeparateLeft(const std::string& s, const std::string& sep) { return SeparateLeftOf(s, sep); }
std::wstring SeparateLeft(const std::wstring& s, const std::wstring& sep) { return SeparateLeftOf(s, sep); }
std::string SeparateRight(const std::string& s, const std::string& sep) { return SeparateRightOf(s, sep); }
std::wstring SeparateRight(const std::wstring& s, const std::wstring& sep) { return SeparateRightOf(s, sep); }

std::string FetchBin(std::string& src, const std::string& sep) { return FetchBinOf(src, sep); }
std::wstring FetchBin(std::wstring& src, const std::wstring& sep) { return FetchBinOf(src, sep); }
std::string Fetch(std::string& src, const std::string& sep) { return FetchTrimmed(src, sep); }
std::wstring Fetch(std::wstring& src, const std::wstring& sep) { return FetchTrimmed(src, sep); }

std::string FetchEx(std::string& src, const std::string& sep, const std::string& quote) {
  return FetchQuoted(src, sep, quote);
}
std::wstring FetchEx(std::wstring& src, const std::wstring& sep, const std::wstring& quote) {
  return FetchQuoted(src, sep, quote);
}

std::string FetchLine(std::string& src) { return FetchLineOf(src); }
std::wstring FetchLine(std::wstring& src) { return FetchLineOf(src); }

void Split(const std::string& s, const std::string& delims, std::vector<std::string>& out) {
  SplitBySet(s, delims, out);
}
void SplitW(const std::wstring& s, const std::wstring& delims, std::vector<std::wstring>& out) {
  SplitBySet(s, delims, out);
}

std::string Replace(std::string s, const std::string& from, const std::string& to, int count) {
  return ReplaceUpTo(std::move(s), from, to, count);
}
std::wstring Replace(std::wstring s, const std::wstring& from, const std::wstring& to, int count) {
  return ReplaceUpTo(std::move(s), from, to, count);
}

// An absent placeholder gives "" rather than the text: callers test for that.
std::wstring StringProc::ReplacePlaceholder(const std::wstring& text, const std::wstring& value,
                                            const std::wstring& placeholder) {
  const auto pos = text.find(placeholder);
  if (pos == std::wstring::npos) return std::wstring();
  std::wstring result = text;
  result.replace(pos, placeholder.size(), value);
  return result;
}

}  // namespace DE
