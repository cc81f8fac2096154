// The registry's text interchange format ("Windows Registry Editor Version 5.00" .reg files):
// parsing and formatting, separate from the registry itself so it can be fuzzed alone.
//
// Values: "text" (REG_SZ), dword:XXXXXXXX (REG_DWORD), hex:.. (REG_BINARY), hex(N):.. (type N,
// bytes as stored; N in hex), "-" (delete the value); @ names the default value. Keys: [path],
// [-path] (delete the key with its sub-keys). A trailing "\" continues a hex list on the next
// line; lines starting with ";" are comments. "REGEDIT4" files are read too (string data then
// comes from the ANSI code page).
#pragma once

#include <string>
#include <vector>

#include "UtilPlatform.h"

namespace DE::detail {

struct RegFileValue {
  std::wstring name;
  bool remove = false;
  DWORD type = 0;
  std::string data;  // the value's bytes as the registry stores them (strings UTF-16LE)
};

struct RegFileKey {
  std::wstring path;  // with its root name, e.g. HKEY_CURRENT_USER\Software\X
  bool remove = false;
  std::vector<RegFileValue> values;
};

// The text of a file's bytes: UTF-16LE after a BOM, else UTF-8 (BOM optional).
std::wstring DecodeRegFileBytes(const std::string& bytes);
// Parses the text; on a syntax error returns false with error naming the line.
bool ParseRegFile(const std::wstring& text, std::vector<RegFileKey>& keys, std::string& error);
// The REGEDIT5 text, CRLF line ends, without BOM.
std::wstring FormatRegFile(const std::vector<RegFileKey>& keys);
// The bytes of a file: BOM and UTF-16LE.
std::string EncodeRegFileBytes(const std::wstring& text);

}  // namespace DE::detail
