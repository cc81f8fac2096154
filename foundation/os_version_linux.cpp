// Linux source of OSVersion's fields: the kernel release and machine, and os-release, under the
// system root UTIL_SYSROOT. Only Linux-specific code goes in this file.
#include <sys/utsname.h>

#include <string>

#include "foundation/os_version_detail.h"
#include "foundation/text_codec.h"
#include "platform/linux/system_root.h"

namespace DE::detail {

namespace {

using linux_impl::ReadFirstLine;
using linux_impl::ReadSmallFile;
using linux_impl::UnderSystemRoot;

// proc/sys/kernel/{osrelease,arch} under the system root, so a fixture tree can stand in for the
// running kernel; uname() when the root does not have them.
void ReadKernel(std::string& release, std::string& machine) {
  const bool haveRelease = ReadFirstLine(UnderSystemRoot("proc/sys/kernel/osrelease"), release);
  const bool haveMachine = ReadFirstLine(UnderSystemRoot("proc/sys/kernel/arch"), machine);
  if (haveRelease && haveMachine) return;
  struct utsname names = {};
  if (uname(&names) != 0) return;
  if (!haveRelease) release = names.release;
  if (!haveMachine) machine = names.machine;
}

// Up to three dot-separated numbers from the start of a kernel release ("6.1.0-18-amd64").
void ParseKernelRelease(const std::string& release, int numbers[3]) {
  std::size_t at = 0;
  for (int i = 0; i < 3; ++i) {
    if (at >= release.size() || release[at] < '0' || release[at] > '9') return;
    int value = 0;
    while (at < release.size() && release[at] >= '0' && release[at] <= '9') {
      if (value < 100000000) value = value * 10 + (release[at] - '0');
      ++at;
    }
    numbers[i] = value;
    if (at >= release.size() || release[at] != '.') return;
    ++at;
  }
}

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

// The value of one os-release assignment, read as the shell reads it: single quotes keep
// everything, double quotes honour \" \\ \$ \`, a bare backslash escapes the next character, and
// an unquoted blank ends the word.
std::string ShellWord(const std::string& text) {
  std::string word;
  std::size_t i = 0;
  while (i < text.size() && !IsBlank(text[i])) {
    const char c = text[i++];
    if (c == '\'') {
      while (i < text.size() && text[i] != '\'') word += text[i++];
      ++i;
    } else if (c == '"') {
      while (i < text.size() && text[i] != '"') {
        if (text[i] == '\\' && i + 1 < text.size() &&
            std::string("\"\\$`").find(text[i + 1]) != std::string::npos) {
          ++i;
        }
        word += text[i++];
      }
      ++i;
    } else if (c == '\\' && i < text.size()) {
      word += text[i++];
    } else {
      word += c;
    }
  }
  return word;
}

// The last assignment of `key` in an os-release text; false when there is none.
bool FindOsReleaseValue(const std::string& content, const std::string& key, std::string& value) {
  bool found = false;
  std::size_t start = 0;
  while (start < content.size()) {
    std::size_t end = content.find('\n', start);
    if (end == std::string::npos) end = content.size();
    std::size_t at = start;
    while (at < end && IsBlank(content[at])) ++at;
    const std::string line = content.substr(at, end - at);
    start = end + 1;
    if (line.empty() || line[0] == '#') continue;
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos || line.compare(0, equals, key) != 0 || equals != key.size()) {
      continue;
    }
    value = ShellWord(line.substr(equals + 1));
    found = true;
  }
  return found;
}

// etc/os-release takes precedence over usr/lib/os-release, as the format prescribes.
std::wstring SystemName() {
  std::string content;
  std::string name;
  if ((ReadSmallFile(UnderSystemRoot("etc/os-release"), content) ||
       ReadSmallFile(UnderSystemRoot("usr/lib/os-release"), content)) &&
      FindOsReleaseValue(content, "PRETTY_NAME", name) && !name.empty()) {
    return Utf8ToWide(name.data(), name.size());
  }
  return L"Linux";  // os-release's default for an unset PRETTY_NAME
}

}  // namespace

OsVersionFields QueryOsVersion() {
  std::string release;
  std::string machine;
  ReadKernel(release, machine);
  int numbers[3] = {0, 0, 0};
  ParseKernelRelease(release, numbers);

  OsVersionFields fields;
  fields.major = numbers[0];
  fields.minor = numbers[1];
  fields.build = numbers[2];
  fields.architecture = machine == "x86_64" ? 1 : 0;
  fields.name = SystemName();
  return fields;
}

}  // namespace DE::detail
