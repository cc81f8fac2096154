// utl reg: query, add, delete, export and import registry keys, and save, restore, load and
// unload hive files, in the manner of Windows' reg. Key names take a root as reg does (HKLM,
// HKCU, HKCR, HKU, HKCC or the full name). query prints the key and everything below it as .reg
// text (UTF-8); add and delete go through .reg text too, so every value type the file format
// knows can be written. The hive operations enable the backup and restore privileges first
// (root on Linux, where hive files are the store's own databases).
#include <cstdint>
#include <cstdio>
#include <string>

#include "DERegistry.h"
#include "DERegistryFile.h"
#include "DEString.h"
#include "DESystem.h"
#include "command.h"

namespace utl {
namespace {

struct RootName {
  const char* shortName;
  const wchar_t* fullName;
  HKEY key;
};

const RootName kRoots[] = {
    {"HKLM", L"HKEY_LOCAL_MACHINE", HKEY_LOCAL_MACHINE},   {"HKCU", L"HKEY_CURRENT_USER", HKEY_CURRENT_USER},
    {"HKCR", L"HKEY_CLASSES_ROOT", HKEY_CLASSES_ROOT},     {"HKU", L"HKEY_USERS", HKEY_USERS},
    {"HKCC", L"HKEY_CURRENT_CONFIG", HKEY_CURRENT_CONFIG},
};

// "HKLM\Software\X" -> root, full root name and the rest. False for an unknown root.
bool SplitKey(const std::string& name, HKEY& root, std::wstring& full, std::wstring& rest) {
  const size_t slash = name.find('\\');
  const std::wstring head = DE::UpperCase(DE::UTF8ToUnicode(name.substr(0, slash)));
  rest = slash == std::string::npos ? std::wstring() : DE::UTF8ToUnicode(name.substr(slash + 1));
  for (const RootName& candidate : kRoots) {
    if (head == DE::UTF8ToUnicode(candidate.shortName) || head == candidate.fullName) {
      root = candidate.key;
      full = candidate.fullName + (rest.empty() ? std::wstring() : L"\\" + rest);
      return true;
    }
  }
  return false;
}

std::wstring Quoted(const std::wstring& text) {
  std::wstring out = L"\"";
  for (wchar_t c : text) {
    if (c == L'\\' || c == L'"') out.push_back(L'\\');
    out.push_back(c);
  }
  return out + L"\"";
}

std::wstring HexOf(const std::string& bytes) {
  static const wchar_t kDigits[] = L"0123456789abcdef";
  std::wstring out;
  for (size_t i = 0; i < bytes.size(); ++i) {
    if (i > 0) out.push_back(L',');
    out.push_back(kDigits[static_cast<unsigned char>(bytes[i]) >> 4]);
    out.push_back(kDigits[static_cast<unsigned char>(bytes[i]) & 15]);
  }
  return out;
}

std::string Utf16Le(const std::wstring& text) {
  const std::string utf8 = DE::UnicodeToUTF8(text);
  std::string bytes;
  // Via UTF-8 so that characters beyond the BMP become surrogate pairs on both platforms.
  for (size_t i = 0; i < utf8.size();) {
    const unsigned char lead = static_cast<unsigned char>(utf8[i]);
    const int length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    std::uint32_t code = length == 1 ? lead : lead & (0x3F >> (length - 1));
    for (int k = 1; k < length && i + k < utf8.size(); ++k) code = (code << 6) | (utf8[i + k] & 0x3F);
    i += length;
    auto put = [&bytes](std::uint32_t unit) {
      bytes.push_back(static_cast<char>(unit & 0xFF));
      bytes.push_back(static_cast<char>(unit >> 8));
    };
    if (code >= 0x10000) {
      put(0xD800 + ((code - 0x10000) >> 10));
      put(0xDC00 + ((code - 0x10000) & 0x3FF));
    } else {
      put(code);
    }
  }
  return bytes;
}

// The .reg data form of /t type /d data; false for an unknown type or bad number.
bool DataForm(const std::string& type, const std::string& data, std::wstring& form) {
  const std::wstring wide = DE::UTF8ToUnicode(data);
  if (type == "REG_SZ") {
    form = L"hex(1):" + HexOf(Utf16Le(wide) + std::string(2, '\0'));
  } else if (type == "REG_EXPAND_SZ") {
    form = L"hex(2):" + HexOf(Utf16Le(wide) + std::string(2, '\0'));
  } else if (type == "REG_MULTI_SZ") {
    // reg's separator: \0 between the strings.
    std::string bytes;
    std::wstring items = wide;
    for (size_t at; (at = items.find(L"\\0")) != std::wstring::npos; items.erase(0, at + 2)) {
      bytes += Utf16Le(items.substr(0, at)) + std::string(2, '\0');
    }
    if (!items.empty()) bytes += Utf16Le(items) + std::string(2, '\0');
    form = L"hex(7):" + HexOf(bytes + std::string(2, '\0'));
  } else if (type == "REG_DWORD" || type == "REG_QWORD") {
    char* end = nullptr;
    const unsigned long long number = std::strtoull(data.c_str(), &end, 0);
    if (data.empty() || *end != '\0') return false;
    std::string bytes;
    for (int i = 0; i < (type == "REG_DWORD" ? 4 : 8); ++i)
      bytes.push_back(static_cast<char>((number >> (8 * i)) & 0xFF));
    form = (type == "REG_DWORD" ? L"hex(4):" : L"hex(b):") + HexOf(bytes);
  } else if (type == "REG_BINARY" || type == "REG_NONE") {
    if (data.size() % 2 != 0) return false;
    std::string bytes;
    for (size_t i = 0; i < data.size(); i += 2)
      bytes.push_back(static_cast<char>(std::stoi(data.substr(i, 2), nullptr, 16)));
    form = (type == "REG_BINARY" ? L"hex:" : L"hex(0):") + HexOf(bytes);
  } else {
    return false;
  }
  return true;
}

int Report(int code, const char* what) {
  if (code == 0) return 0;
  return Failure(std::string(what) + " failed (Win32 error " + std::to_string(code) + ")");
}

const std::wstring kHeader = L"Windows Registry Editor Version 5.00\r\n\r\n";

int Query(const std::vector<std::string>& args) {
  if (args.size() != 1) return UsageError("reg", "query takes one key name");
  HKEY root;
  std::wstring full, rest;
  if (!SplitKey(args[0], root, full, rest)) return UsageError("reg", "unknown root in " + args[0]);
  std::wstring text;
  const int code = DE::ExportRegistryText(root, rest, text);
  if (code != 0) return Report(code, "query");
  WriteOut(DE::UnicodeToUTF8(text));
  return 0;
}

int Add(const std::vector<std::string>& args) {
  if (args.empty()) return UsageError("reg", "add needs a key name");
  HKEY root;
  std::wstring full, rest;
  if (!SplitKey(args[0], root, full, rest)) return UsageError("reg", "unknown root in " + args[0]);
  std::string name, type = "REG_SZ", data;
  bool hasValue = false;
  for (size_t i = 1; i < args.size(); ++i) {
    const std::string option = DE::UpperCase(args[i]);
    if (option == "/VE") {
      hasValue = true;
    } else if (option == "/F") {
    } else if (i + 1 < args.size() && (option == "/V" || option == "/T" || option == "/D")) {
      (option == "/V" ? name : option == "/T" ? type : data) = args[++i];
      hasValue = hasValue || option == "/V";
      if (option == "/T") type = DE::UpperCase(type);
    } else {
      return UsageError("reg", "unknown option " + args[i]);
    }
  }
  std::wstring text = kHeader + L"[" + full + L"]\r\n";
  if (hasValue) {
    std::wstring form;
    if (!DataForm(type, data, form)) return UsageError("reg", "bad type or data");
    text += (name.empty() ? std::wstring(L"@") : Quoted(DE::UTF8ToUnicode(name))) + L"=" + form + L"\r\n";
  }
  return Report(DE::ImportRegistryText(text), "add");
}

int Delete(const std::vector<std::string>& args) {
  if (args.empty()) return UsageError("reg", "delete needs a key name");
  HKEY root;
  std::wstring full, rest;
  if (!SplitKey(args[0], root, full, rest)) return UsageError("reg", "unknown root in " + args[0]);
  std::wstring text = kHeader;
  if (args.size() >= 3 && DE::UpperCase(args[1]) == "/V") {
    text += L"[" + full + L"]\r\n" + Quoted(DE::UTF8ToUnicode(args[2])) + L"=-\r\n";
  } else if (args.size() >= 2 && DE::UpperCase(args[1]) == "/VE") {
    text += L"[" + full + L"]\r\n@=-\r\n";
  } else {
    if (rest.empty()) return UsageError("reg", "a root cannot be deleted");
    text += L"[-" + full + L"]\r\n";
  }
  return Report(DE::ImportRegistryText(text), "delete");
}

int Export(const std::vector<std::string>& args) {
  if (args.size() < 2) return UsageError("reg", "export needs a key name and a file");
  HKEY root;
  std::wstring full, rest;
  if (!SplitKey(args[0], root, full, rest)) return UsageError("reg", "unknown root in " + args[0]);
  return Report(DE::ExportRegistryFile(root, rest, DE::UTF8ToUnicode(args[1])), "export");
}

int Import(const std::vector<std::string>& args) {
  if (args.size() != 1) return UsageError("reg", "import takes one file");
  return Report(DE::ImportRegistryFile(DE::UTF8ToUnicode(args[0])), "import");
}

// save|restore <key> <file>, load <root>\<name> <file>, unload <root>\<name>.
int Hive(const std::string& operation, const std::vector<std::string>& args) {
  const size_t wanted = operation == "unload" ? 1 : 2;
  if (args.size() != wanted)
    return UsageError("reg",
                      operation + (wanted == 1 ? " takes one key name" : " takes a key name and a file"));
  HKEY root;
  std::wstring full, rest;
  if (!SplitKey(args[0], root, full, rest)) return UsageError("reg", "unknown root in " + args[0]);
  const bool named = !rest.empty() && rest.find(L'\\') == std::wstring::npos;
  if ((operation == "load" || operation == "unload") &&
      (!named || (root != HKEY_USERS && root != HKEY_LOCAL_MACHINE))) {
    return UsageError("reg", operation + " takes HKLM\\<name> or HKU\\<name>");
  }
  DE::SetTokenPrivilege(L"SeBackupPrivilege", true);
  DE::SetTokenPrivilege(L"SeRestorePrivilege", true);
  DE::Registry registry;
  registry.SetRootKey(root);
  const std::wstring file = wanted == 2 ? DE::UTF8ToUnicode(args[1]) : std::wstring();
  if (operation == "load" || operation == "unload") {
    // These two report no Win32 code; the usual causes are named instead.
    const bool done = operation == "load" ? registry.LoadKey(rest, file) : registry.UnLoadKey(rest);
    return done ? 0
                : Failure(operation + " failed (not privileged, not a hive file, or the name is " +
                          (operation == "load" ? "taken)" : "not a loaded hive)"));
  }
  const bool done =
      operation == "save" ? registry.SaveKey(L"\\" + rest, file) : registry.RestoreKey(L"\\" + rest, file);
  if (done) return 0;
  return registry.GetLastError() != 0 ? Report(registry.GetLastError(), operation.c_str())
                                      : Failure(operation + " failed: the key does not open");
}

int Reg(const std::vector<std::string>& args) {
  if (args.empty()) return UsageError("reg", "missing operation");
  const std::string operation = DE::LowerCase(args[0]);
  const std::vector<std::string> rest(args.begin() + 1, args.end());
  if (operation == "query") return Query(rest);
  if (operation == "add") return Add(rest);
  if (operation == "delete") return Delete(rest);
  if (operation == "export") return Export(rest);
  if (operation == "import") return Import(rest);
  if (operation == "save" || operation == "restore" || operation == "load" || operation == "unload") {
    return Hive(operation, rest);
  }
  return UsageError("reg", "unknown operation " + args[0]);
}

}  // namespace

UTL_COMMAND(
    "reg",
    "query|add|delete|export|import|save|restore|load|unload <key> [/v name|/ve] [/t type] [/d data] [file]",
    "read and write the registry and its hive files as Windows' reg does", Reg);

}  // namespace utl
