// Text commands: code-page conversion, Base64, hex, GUIDs.
#include <cstdio>
#include <iostream>
#include <iterator>

#include "DEString.h"
#include "command.h"

namespace utl {
namespace {

// The bytes to work on: the argument when given, else all of standard input.
std::string InputBytes(const std::vector<std::string>& args, std::size_t index) {
  if (index < args.size()) return args[index];
  return std::string(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
}

// Wide text from bytes in an encoding the tool names.
bool Decode(const std::string& encoding, const std::string& bytes, std::wstring& out) {
  if (encoding == "ansi") {
    out = DE::StringProc::StringToWString(bytes);
  } else if (encoding == "utf8") {
    out = DE::StringProc::StringToWStringByUTF8(bytes);
  } else if (encoding == "utf16") {
    out.clear();
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
      out.push_back(static_cast<wchar_t>(static_cast<unsigned char>(bytes[i]) |
                                         (static_cast<unsigned char>(bytes[i + 1]) << 8)));
    }
    // Pairs from UTF-16 become single characters where wchar_t holds code points.
    out = DE::StringProc::StringToWStringByUTF8(DE::StringProc::WStringToStringByUTF8(out));
  } else {
    return false;
  }
  return true;
}

std::string Utf16LeBytes(const std::wstring& text) {
  std::string bytes;
  auto put = [&bytes](unsigned unit) {
    bytes.push_back(static_cast<char>(unit & 0xFF));
    bytes.push_back(static_cast<char>(unit >> 8));
  };
  for (wchar_t c : text) {
    const unsigned long value = static_cast<unsigned long>(c);
    if (value > 0xFFFF) {
      put(0xD800 + ((value - 0x10000) >> 10));
      put(0xDC00 + ((value - 0x10000) & 0x3FF));
    } else {
      put(static_cast<unsigned>(value));
    }
  }
  return bytes;
}

bool Encode(const std::string& encoding, const std::wstring& text, std::string& out) {
  if (encoding == "ansi") {
    out = DE::StringProc::WStringToString(text);
  } else if (encoding == "utf8") {
    out = DE::StringProc::WStringToStringByUTF8(text);
  } else if (encoding == "utf16") {
    out = Utf16LeBytes(text);
  } else {
    return false;
  }
  return true;
}

int Convert(const std::vector<std::string>& args) {
  if (args.size() < 2 || args.size() > 3)
    return UsageError("convert", "expects an input and an output encoding");
  std::wstring text;
  if (!Decode(args[0], InputBytes(args, 2), text))
    return UsageError("convert", "unknown encoding '" + args[0] + "'");
  std::string out;
  if (!Encode(args[1], text, out)) return UsageError("convert", "unknown encoding '" + args[1] + "'");
  WriteOut(out);
  return 0;
}

int Base64(const std::vector<std::string>& args) {
  if (args.empty() || args.size() > 2) return UsageError("base64", "expects encode or decode");
  const std::string input = InputBytes(args, 1);
  if (args[0] == "encode") {
    std::string copy = input;
    PrintLine(
        DE::Base64Encode(reinterpret_cast<unsigned char*>(&copy[0]), static_cast<unsigned>(copy.size())));
  } else if (args[0] == "decode") {
    WriteOut(DE::Base64Decode(DE::TrimSP(input.substr(0, input.find_first_of("\r\n")))));
  } else {
    return UsageError("base64", "expects encode or decode, not '" + args[0] + "'");
  }
  return 0;
}

int Hex(const std::vector<std::string>& args) {
  if (args.empty() || args.size() > 2) return UsageError("hex", "expects encode or decode");
  const std::string input = InputBytes(args, 1);
  if (args[0] == "encode") {
    PrintLine(DE::BytesToHexString(input));
    return 0;
  }
  if (args[0] != "decode") return UsageError("hex", "expects encode or decode, not '" + args[0] + "'");
  std::string digits = input.substr(0, input.find_first_of("\r\n"));
  std::string bytes;
  if (!digits.empty() && DE::HexStringToBytesString(digits, bytes) == 0) {
    return Failure("not an even number of hex digits: '" + digits + "'");
  }
  WriteOut(bytes);
  return 0;
}

int Guid(const std::vector<std::string>& args) {
  if (!args.empty()) return UsageError("guid", "takes no arguments");
  const std::string guid = DE::GetGuidString();
  if (guid.empty()) return Failure("no GUID could be made");
  PrintLine(guid);
  return 0;
}

UTL_COMMAND("convert", "ansi|utf8|utf16 ansi|utf8|utf16 [text]",
            "convert stdin (or a UTF-8 argument) between encodings; utf16 is LE", Convert);
UTL_COMMAND("base64", "encode|decode [text]", "Base64 of the text (argument or stdin)", Base64);
UTL_COMMAND("hex", "encode|decode [text]", "upper-case hex of bytes, or bytes of hex", Hex);
UTL_COMMAND("guid", "", "print a fresh GUID", Guid);

}  // namespace
}  // namespace utl
