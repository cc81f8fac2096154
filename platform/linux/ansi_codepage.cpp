#include "platform/linux/ansi_codepage.h"

#include <iconv.h>
#include <langinfo.h>
#include <locale.h>

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <map>

#include "PxsLog.h"
#include "platform/linux/utf8_codec.h"

namespace DE::detail::linux_impl {
namespace {

const iconv_t kNoConverter = reinterpret_cast<iconv_t>(-1);
constexpr const char* kWideName = "WCHAR_T";

std::string UpperAscii(std::string s) {
  for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return s;
}

bool IsUtf8Name(const std::string& name) {
  const std::string upper = UpperAscii(name);
  return upper == "UTF-8" || upper == "UTF8" || upper == "CP65001";
}

// iconv descriptors are not thread-safe, and opening one costs far more than a short
// conversion, so each thread keeps its own pair per page for the life of the thread.
class ThreadConverters {
 public:
  ~ThreadConverters() {
    for (auto& entry : converters_) {
      if (entry.second.decode != kNoConverter) iconv_close(entry.second.decode);
      if (entry.second.encode != kNoConverter) iconv_close(entry.second.encode);
    }
  }

  iconv_t Decoder(const std::string& page) { return Open(page).decode; }
  iconv_t Encoder(const std::string& page) { return Open(page).encode; }

 private:
  struct Pair {
    iconv_t decode = kNoConverter;
    iconv_t encode = kNoConverter;
  };

  Pair& Open(const std::string& page) {
    auto found = converters_.find(page);
    if (found != converters_.end()) return found->second;
    Pair& pair = converters_[page];
    pair.decode = iconv_open(kWideName, page.c_str());
    pair.encode = iconv_open(page.c_str(), kWideName);
    return pair;
  }

  std::map<std::string, Pair> converters_;
};

ThreadConverters& Converters() {
  thread_local ThreadConverters converters;
  return converters;
}

iconv_t Reset(iconv_t cd) {
  if (cd != kNoConverter) iconv(cd, nullptr, nullptr, nullptr, nullptr);
  return cd;
}

std::string LocaleCodeSet() {
  locale_t locale = newlocale(LC_CTYPE_MASK, "", static_cast<locale_t>(nullptr));
  if (locale == static_cast<locale_t>(nullptr)) return std::string();
  std::string codeSet = nl_langinfo_l(CODESET, locale);
  freelocale(locale);
  return codeSet;
}

bool IsAsciiName(const std::string& name) {
  const std::string upper = UpperAscii(name);
  return upper.empty() || upper == "ANSI_X3.4-1968" || upper == "ASCII" || upper == "US-ASCII";
}

bool CanOpen(const std::string& name) {
  iconv_t cd = iconv_open(kWideName, name.c_str());
  if (cd == kNoConverter) return false;
  iconv_close(cd);
  return true;
}

std::string ConfiguredName() {
  const char* setting = std::getenv("UTIL_ANSI_CODEPAGE");
  if (setting != nullptr && *setting != '\0') {
    const std::string name = NormalizeCodePageName(setting);
    if (IsUtf8Name(name) || CanOpen(name)) return name;
    PXSLOGE("Util", std::string("UTIL_ANSI_CODEPAGE names an unknown code page: ") + setting);
  }
  const std::string codeSet = LocaleCodeSet();
  return IsAsciiName(codeSet) ? "CP1252" : NormalizeCodePageName(codeSet);
}

// True when every byte from 0x80 up either decodes alone or is invalid alone; a byte that iconv
// reports as the incomplete start of a sequence marks a multi-byte page.
bool ProbeSingleByte(const std::string& name) {
  iconv_t cd = iconv_open(kWideName, name.c_str());
  if (cd == kNoConverter) return true;
  bool single = true;
  for (int byte = 0x80; byte <= 0xFF && single; ++byte) {
    char in = static_cast<char>(byte);
    wchar_t out[4];
    char* inPtr = &in;
    size_t inLeft = 1;
    char* outPtr = reinterpret_cast<char*>(out);
    size_t outLeft = sizeof(out);
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
    if (iconv(cd, &inPtr, &inLeft, &outPtr, &outLeft) == static_cast<size_t>(-1) && errno == EINVAL) {
      single = false;
    }
  }
  iconv_close(cd);
  return single;
}

}  // namespace

std::string NormalizeCodePageName(const std::string& setting) {
  bool numeric = !setting.empty();
  for (char c : setting) numeric = numeric && std::isdigit(static_cast<unsigned char>(c));
  if (!numeric) return setting;
  return setting == "65001" ? "UTF-8" : "CP" + setting;
}

const AnsiCodePage& AnsiCodePage::Get() {
  static const AnsiCodePage page(ConfiguredName());
  return page;
}

AnsiCodePage::AnsiCodePage(std::string iconvName)
    : name_(std::move(iconvName)), utf8_(IsUtf8Name(name_)), singleByte_(utf8_ || ProbeSingleByte(name_)) {}

std::wstring AnsiCodePage::Decode(const char* text, std::size_t length) const {
  if (utf8_) return DecodeUtf8(text, length);
  iconv_t cd = Reset(Converters().Decoder(name_));
  if (cd == kNoConverter) return std::wstring();

  // No supported page turns one byte into more than one character.
  std::wstring out(length, L'\0');
  char* in = const_cast<char*>(text);
  size_t inLeft = length;
  char* outPtr = reinterpret_cast<char*>(&out[0]);
  size_t outLeft = length * sizeof(wchar_t);
  while (inLeft > 0) {
    if (iconv(cd, &in, &inLeft, &outPtr, &outLeft) != static_cast<size_t>(-1)) break;
    if (errno != EILSEQ && errno != EINVAL) break;
    const unsigned char bad = static_cast<unsigned char>(*in);
    const wchar_t replacement = singleByte_ ? static_cast<wchar_t>(bad) : L'?';
    *reinterpret_cast<wchar_t*>(outPtr) = replacement;
    outPtr += sizeof(wchar_t);
    outLeft -= sizeof(wchar_t);
    ++in;
    --inLeft;
    Reset(cd);
  }
  out.resize(out.size() - outLeft / sizeof(wchar_t));
  return out;
}

std::string AnsiCodePage::Encode(const wchar_t* text, std::size_t length) const {
  if (utf8_) return EncodeUtf8(text, length);
  iconv_t cd = Reset(Converters().Encoder(name_));
  if (cd == kNoConverter) return std::string();

  std::string out(length * 2 + 8, '\0');
  char* in = reinterpret_cast<char*>(const_cast<wchar_t*>(text));
  size_t inLeft = length * sizeof(wchar_t);
  size_t used = 0;
  while (inLeft > 0) {
    char* outPtr = &out[used];
    size_t outLeft = out.size() - used;
    const size_t rc = iconv(cd, &in, &inLeft, &outPtr, &outLeft);
    used = out.size() - outLeft;
    if (rc != static_cast<size_t>(-1)) break;
    if (errno == E2BIG) {
      out.resize(out.size() * 2);
      continue;
    }
    if (errno != EILSEQ && errno != EINVAL) break;
    // One "?" per UTF-16 unit the page cannot hold, as Windows counts them: a character past
    // U+FFFF gives "??", and so does a surrogate pair held in two units.
    const auto unit = static_cast<unsigned long>(*reinterpret_cast<const wchar_t*>(in));
    const std::size_t marks = unit > 0xFFFF ? 2 : 1;
    if (used + marks > out.size()) out.resize(out.size() * 2 + marks);
    out.replace(used, marks, marks, '?');
    used += marks;
    in += sizeof(wchar_t);
    inLeft -= sizeof(wchar_t);
    Reset(cd);
  }
  out.resize(used);
  return out;
}

}  // namespace DE::detail::linux_impl
