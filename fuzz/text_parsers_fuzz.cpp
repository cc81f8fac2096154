// libFuzzer target for the text parsers: Base64, hex, the Fetch family, Split, Replace, every
// StringTo*Def (narrow, and wide through the UTF-8 decoder) and the UTF-8 conversions. The first bytes
// choose the separator, quote and replacement; the rest is the text. Each parser must end, stay in
// bounds and keep its own invariants.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "DEString.h"

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

// Takes `n` bytes (or what is left) off the front of the input.
std::string Take(const std::uint8_t*& data, std::size_t& size, std::size_t n) {
  if (n > size) n = size;
  std::string out(reinterpret_cast<const char*>(data), n);
  data += n;
  size -= n;
  return out;
}

void FuzzCodecs(const std::string& text) {
  const std::string decoded = DE::Base64Decode(text);
  std::string copy = decoded;
  Check(DE::Base64Decode(DE::Base64Encode(reinterpret_cast<unsigned char*>(&copy[0]),
                                          static_cast<unsigned int>(copy.size()))) == decoded);

  std::vector<char> buf(text.size() / 2 + 1);
  const int n = DE::HexStringToBytes(text, buf.data(), static_cast<int>(buf.size()));
  std::string bytes = "untouched";
  Check(n == DE::HexStringToBytesString(text, bytes));
  Check(n > 0 ? static_cast<std::size_t>(n) == text.size() / 2 &&
                    DE::BytesToHexString(bytes) == DE::UpperCase(text)
              : bytes == "untouched");
}

// Fetches fields off `src` until it is empty; a fetch that leaves the source unchanged ends the walk,
// or is a fault when `mustProgress`. A field is never longer than the source it came from.
template <typename Fetcher>
void WalkFields(std::string src, bool mustProgress, Fetcher fetch) {
  while (!src.empty()) {
    const std::size_t before = src.size();
    Check(fetch(src).size() <= before);
    if (src.size() >= before) return Check(!mustProgress);
  }
}

void FuzzCutting(const std::string& sep, const std::string& quote, const std::string& text) {
  WalkFields(text, !sep.empty(), [&](std::string& s) { return DE::FetchEx(s, sep, quote); });
  WalkFields(text, false, [&](std::string& s) { return DE::Fetch(s, sep); });
  WalkFields(text, true, [&](std::string& s) {
    const std::string line = DE::FetchLine(s);
    Check(line.find_first_of("\r\n") == std::string::npos);
    return line;
  });

  std::vector<std::string> fields;
  DE::Split(text, sep, fields);
  Check(!fields.empty());
  if (sep.empty()) Check(fields.size() == 1 && fields[0] == text);
  for (const std::string& field : fields) Check(sep.empty() || field.find_first_of(sep) == std::string::npos);
}

void FuzzReplace(const std::string& from, const std::string& to, int count, const std::string& text) {
  const std::string out = DE::Replace(text, from, to, count);
  if (from == to) Check(out == text);
  if (!from.empty() && text.find(from) == std::string::npos) Check(out == text);
}

template <typename Text>
void FuzzNumbers(const Text& s) {
  DE::StringToInt8Def(s, static_cast<signed char>(1));
  DE::StringToUInt8Def(s, static_cast<unsigned char>(1));
  DE::StringToInt16Def(s, static_cast<short>(1));
  DE::StringToUInt16Def(s, static_cast<unsigned short>(1));
  const int i32 = DE::StringToInt32Def(s, 1);
  const long long i64 = DE::StringToInt64Def(s, 1LL);
  // A value that fits 32 bits parses the same either way.
  if (i64 != 1 && i64 >= -2147483647 - 1 && i64 <= 2147483647) Check(i32 == i64);
  DE::StringToUInt32Def(s, 1u);
  DE::StringToUInt64Def(s, 1ULL);
  DE::StringToFloatDef(s, 1.0f);
  DE::StringToDoubleDef(s, 1.0);
}

void FuzzUtf8(const std::string& text) {
  const std::wstring wide = DE::UTF8ToUnicode(text);
  const std::string utf8 = DE::UnicodeToUTF8(wide);
  Check(DE::UTF8ToUnicode(utf8) == wide);
  Check(DE::UnicodeToUTF8(DE::UTF8ToUnicode(utf8)) == utf8);

  const std::wstring whole = DE::StringProc::StringToWStringByUTF8(text);
  Check(DE::StringProc::StringToWStringByUTF8(DE::StringProc::WStringToStringByUTF8(whole)) == whole);
  FuzzNumbers(whole);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 4) return 0;
  const std::uint8_t lengths = data[0];
  const int count = static_cast<int>(data[1] % 20) - 3;  // -3..16: the special values and small limits
  data += 2;
  size -= 2;
  const std::string sep = Take(data, size, lengths & 3);
  const std::string quote = Take(data, size, (lengths >> 2) & 1);
  const std::string to = Take(data, size, (lengths >> 3) & 7);
  const std::string text = Take(data, size, size);

  FuzzCodecs(text);
  FuzzCutting(sep, quote, text);
  FuzzReplace(sep, to, count, text);
  FuzzNumbers(text);
  FuzzUtf8(text);
  return 0;
}
