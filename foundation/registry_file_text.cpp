// The .reg text format: decoding, parsing and formatting (no registry access).
#include <cstdint>
#include <cstdio>

#include "foundation/registry_file.h"
#include "foundation/text_codec.h"
#include "foundation/utf16.h"

namespace DE::detail {

namespace {

const wchar_t* const kHeader5 = L"Windows Registry Editor Version 5.00";
const wchar_t* const kHeader4 = L"REGEDIT4";
constexpr size_t kLineWidth = 80;

std::string Utf16Bytes(const std::wstring& text, bool terminate) {
  std::vector<std::uint16_t> units = ToUtf16(text);
  if (terminate) units.push_back(0);
  std::string bytes;
  for (std::uint16_t unit : units) {
    bytes.push_back(static_cast<char>(unit & 0xFF));
    bytes.push_back(static_cast<char>(unit >> 8));
  }
  return bytes;
}

std::wstring FromUtf16Bytes(const std::string& bytes) {
  std::vector<std::uint16_t> units;
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
    units.push_back(static_cast<std::uint16_t>(static_cast<unsigned char>(bytes[i]) |
                                               (static_cast<unsigned char>(bytes[i + 1]) << 8)));
  }
  return FromUtf16(units.data(), units.size());
}

int HexDigit(wchar_t c) {
  if (c >= L'0' && c <= L'9') return c - L'0';
  if (c >= L'a' && c <= L'f') return c - L'a' + 10;
  if (c >= L'A' && c <= L'F') return c - L'A' + 10;
  return -1;
}

// A quoted string starting at text[pos] (the opening quote); pos ends after the closing one.
bool ReadQuoted(const std::wstring& text, size_t& pos, std::wstring& out) {
  if (pos >= text.size() || text[pos] != L'"') return false;
  out.clear();
  for (++pos; pos < text.size(); ++pos) {
    if (text[pos] == L'\\' && pos + 1 < text.size()) {
      const wchar_t next = text[++pos];
      out.push_back(next == L'n' ? L'\n' : next == L'r' ? L'\r' : next == L'0' ? L'\0' : next);
    } else if (text[pos] == L'"') {
      ++pos;
      return true;
    } else {
      out.push_back(text[pos]);
    }
  }
  return false;
}

bool ParseHexList(const std::wstring& text, std::string& bytes) {
  size_t pos = 0;
  while (pos < text.size()) {
    while (pos < text.size() && (text[pos] == L' ' || text[pos] == L'\t')) ++pos;
    if (pos >= text.size()) break;
    const int high = HexDigit(text[pos]);
    const int low = pos + 1 < text.size() ? HexDigit(text[pos + 1]) : -1;
    if (high < 0) return false;
    if (low < 0) {
      bytes.push_back(static_cast<char>(high));
      ++pos;
    } else {
      bytes.push_back(static_cast<char>(high * 16 + low));
      pos += 2;
    }
    while (pos < text.size() && (text[pos] == L' ' || text[pos] == L'\t')) ++pos;
    if (pos < text.size()) {
      if (text[pos] != L',') return false;
      ++pos;
    }
  }
  return true;
}

bool ParseData(const std::wstring& text, bool ansiStrings, RegFileValue& value) {
  if (text == L"-") {
    value.remove = true;
    return true;
  }
  if (!text.empty() && text[0] == L'"') {
    size_t pos = 0;
    std::wstring content;
    if (!ReadQuoted(text, pos, content) || pos != text.size()) return false;
    value.type = REG_SZ;
    value.data = Utf16Bytes(content, true);
    return true;
  }
  if (text.compare(0, 6, L"dword:") == 0) {
    const std::wstring digits = text.substr(6);
    if (digits.empty() || digits.size() > 8) return false;
    std::uint32_t number = 0;
    for (wchar_t c : digits) {
      const int digit = HexDigit(c);
      if (digit < 0) return false;
      number = number * 16 + static_cast<std::uint32_t>(digit);
    }
    value.type = REG_DWORD;
    value.data.clear();
    for (int i = 0; i < 4; ++i) value.data.push_back(static_cast<char>((number >> (8 * i)) & 0xFF));
    return true;
  }
  if (text.compare(0, 4, L"hex:") == 0) {
    value.type = REG_BINARY;
    return ParseHexList(text.substr(4), value.data);
  }
  if (text.compare(0, 4, L"hex(") == 0) {
    const size_t close = text.find(L"):");
    if (close == std::wstring::npos || close == 4 || close > 12) return false;
    std::uint32_t type = 0;
    for (size_t i = 4; i < close; ++i) {
      const int digit = HexDigit(text[i]);
      if (digit < 0) return false;
      type = type * 16 + static_cast<std::uint32_t>(digit);
    }
    value.type = type;
    if (!ParseHexList(text.substr(close + 2), value.data)) return false;
    // REGEDIT4 stores string types as ANSI bytes; the registry keeps them wide.
    if (ansiStrings && (type == REG_SZ || type == REG_EXPAND_SZ || type == 7)) {
      value.data = Utf16Bytes(ToWide(CodePage::Ansi, value.data.data(), value.data.size()), false);
    }
    return true;
  }
  return false;
}

std::wstring Trim(const std::wstring& text) {
  const size_t first = text.find_first_not_of(L" \t");
  if (first == std::wstring::npos) return std::wstring();
  const size_t last = text.find_last_not_of(L" \t");
  return text.substr(first, last - first + 1);
}

std::wstring Quote(const std::wstring& text) {
  std::wstring out = L"\"";
  for (wchar_t c : text) {
    if (c == L'\\' || c == L'"') out.push_back(L'\\');
    out.push_back(c);
  }
  return out + L"\"";
}

// A REG_SZ that a quoted string shows exactly: one final NUL, no other NUL or line break.
bool PlainString(const RegFileValue& value, std::wstring& text) {
  if (value.type != REG_SZ || value.data.size() < 2 || value.data.size() % 2 != 0) return false;
  text = FromUtf16Bytes(value.data);
  if (text.empty() || text.back() != L'\0') return false;
  text.pop_back();
  return text.find_first_of(std::wstring(L"\0\r\n", 3)) == std::wstring::npos;
}

std::wstring HexList(const std::wstring& prefix, const std::string& bytes) {
  std::wstring out = prefix;
  size_t lineStart = 0;
  for (size_t i = 0; i < bytes.size(); ++i) {
    wchar_t digits[4];
    std::swprintf(digits, 4, L"%02x", static_cast<unsigned char>(bytes[i]));
    out += digits;
    if (i + 1 < bytes.size()) {
      out += L",";
      // Wrap as regedit does: a backslash, then the rest indented by two spaces.
      if (out.size() - lineStart > kLineWidth - 4) {
        out += L"\\\r\n  ";
        lineStart = out.size() - 2;
      }
    }
  }
  return out;
}

}  // namespace

std::wstring DecodeRegFileBytes(const std::string& bytes) {
  if (bytes.size() >= 2 && static_cast<unsigned char>(bytes[0]) == 0xFF &&
      static_cast<unsigned char>(bytes[1]) == 0xFE) {
    return FromUtf16Bytes(bytes.substr(2));
  }
  const size_t skip = bytes.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
  return ToWide(CodePage::Utf8, bytes.data() + skip, bytes.size() - skip);
}

bool ParseRegFile(const std::wstring& text, std::vector<RegFileKey>& keys, std::string& error) {
  keys.clear();
  std::vector<std::wstring> lines;
  std::wstring line;
  for (size_t i = 0; i <= text.size(); ++i) {
    if (i == text.size() || text[i] == L'\n') {
      if (!line.empty() && line.back() == L'\r') line.pop_back();
      lines.push_back(line);
      line.clear();
    } else {
      line.push_back(text[i]);
    }
  }
  size_t index = 0;
  while (index < lines.size() && Trim(lines[index]).empty()) ++index;
  if (index >= lines.size()) {
    error = "empty file";
    return false;
  }
  const std::wstring header = Trim(lines[index]);
  const bool ansiStrings = header == kHeader4;
  if (header != kHeader5 && !ansiStrings) {
    error = "line " + std::to_string(index + 1) + ": not a registry file header";
    return false;
  }
  for (++index; index < lines.size(); ++index) {
    const size_t number = index + 1;
    std::wstring current = Trim(lines[index]);
    // A hex list continues while a line ends with a backslash.
    while (!current.empty() && current.back() == L'\\' && current.find(L"hex") != std::wstring::npos &&
           index + 1 < lines.size()) {
      current.pop_back();
      current += Trim(lines[++index]);
    }
    if (current.empty() || current[0] == L';') continue;
    if (current[0] == L'[') {
      if (current.back() != L']' || current.size() < 3) {
        error = "line " + std::to_string(number) + ": unterminated key name";
        return false;
      }
      RegFileKey key;
      key.remove = current[1] == L'-';
      key.path = current.substr(key.remove ? 2 : 1, current.size() - (key.remove ? 3 : 2));
      keys.push_back(key);
      continue;
    }
    if (keys.empty() || keys.back().remove) {
      error = "line " + std::to_string(number) + ": value outside a key";
      return false;
    }
    RegFileValue value;
    size_t pos = 0;
    if (current[0] == L'@') {
      pos = 1;
    } else if (!ReadQuoted(current, pos, value.name)) {
      error = "line " + std::to_string(number) + ": bad value name";
      return false;
    }
    const std::wstring rest = Trim(current.substr(pos));
    if (rest.empty() || rest[0] != L'=' || !ParseData(Trim(rest.substr(1)), ansiStrings, value)) {
      error = "line " + std::to_string(number) + ": bad value data";
      return false;
    }
    keys.back().values.push_back(value);
  }
  return true;
}

std::wstring FormatRegFile(const std::vector<RegFileKey>& keys) {
  std::wstring out = std::wstring(kHeader5) + L"\r\n";
  for (const RegFileKey& key : keys) {
    out += L"\r\n[" + std::wstring(key.remove ? L"-" : L"") + key.path + L"]\r\n";
    for (const RegFileValue& value : key.values) {
      std::wstring line = value.name.empty() ? L"@" : Quote(value.name);
      line += L"=";
      std::wstring text;
      if (value.remove) {
        line += L"-";
      } else if (PlainString(value, text)) {
        line += Quote(text);
      } else if (value.type == REG_DWORD && value.data.size() == 4) {
        wchar_t digits[12];
        const auto* b = reinterpret_cast<const unsigned char*>(value.data.data());
        std::swprintf(
            digits, 12, L"%08x",
            static_cast<unsigned>(b[0] | (b[1] << 8) | (b[2] << 16)) | (static_cast<unsigned>(b[3]) << 24));
        line += L"dword:" + std::wstring(digits);
      } else if (value.type == REG_BINARY) {
        line = HexList(line + L"hex:", value.data);
      } else {
        wchar_t type[12];
        std::swprintf(type, 12, L"%x", static_cast<unsigned>(value.type));
        line = HexList(line + L"hex(" + type + L"):", value.data);
      }
      out += line + L"\r\n";
    }
  }
  return out + L"\r\n";
}

std::string EncodeRegFileBytes(const std::wstring& text) { return "\xFF\xFE" + Utf16Bytes(text, false); }

}  // namespace DE::detail
