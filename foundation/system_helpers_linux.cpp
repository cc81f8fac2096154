// Linux bindings of the process and token helpers (uname, /proc, the effective uid).
// Linux-only code.
#include <dirent.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <cwctype>
#include <fstream>
#include <iterator>

#include "DESystem.h"
#include "foundation/system_helpers_binding.h"
#include "foundation/text_codec.h"
#include "platform/linux/win32_error.h"

namespace DE {
namespace {

constexpr DWORD kErrorNoSuchPrivilege = 1313;  // ERROR_NO_SUCH_PRIVILEGE

// The privilege names Windows knows (SE_*_NAME of winnt.h).
const wchar_t* const kKnownPrivileges[] = {
    L"SeCreateTokenPrivilege",
    L"SeAssignPrimaryTokenPrivilege",
    L"SeLockMemoryPrivilege",
    L"SeIncreaseQuotaPrivilege",
    L"SeUnsolicitedInputPrivilege",
    L"SeMachineAccountPrivilege",
    L"SeTcbPrivilege",
    L"SeSecurityPrivilege",
    L"SeTakeOwnershipPrivilege",
    L"SeLoadDriverPrivilege",
    L"SeSystemProfilePrivilege",
    L"SeSystemtimePrivilege",
    L"SeProfileSingleProcessPrivilege",
    L"SeIncreaseBasePriorityPrivilege",
    L"SeCreatePagefilePrivilege",
    L"SeCreatePermanentPrivilege",
    L"SeBackupPrivilege",
    L"SeRestorePrivilege",
    L"SeShutdownPrivilege",
    L"SeDebugPrivilege",
    L"SeAuditPrivilege",
    L"SeSystemEnvironmentPrivilege",
    L"SeChangeNotifyPrivilege",
    L"SeRemoteShutdownPrivilege",
    L"SeUndockPrivilege",
    L"SeSyncAgentPrivilege",
    L"SeEnableDelegationPrivilege",
    L"SeManageVolumePrivilege",
    L"SeImpersonatePrivilege",
    L"SeCreateGlobalPrivilege",
    L"SeTrustedCredManAccessPrivilege",
    L"SeRelabelPrivilege",
    L"SeIncreaseWorkingSetPrivilege",
    L"SeTimeZonePrivilege",
    L"SeCreateSymbolicLinkPrivilege",
    L"SeDelegateSessionUserImpersonatePrivilege",
};

const char* const k64BitMachines[] = {"x86_64",  "aarch64",     "ppc64",  "ppc64le", "s390x",
                                      "riscv64", "loongarch64", "mips64", "sparc64"};

// Privilege names compare without regard to case, as LookupPrivilegeValueW does.
bool SameName(const wchar_t* a, const wchar_t* b) {
  for (; *a != L'\0' && *b != L'\0'; ++a, ++b) {
    if (std::towlower(static_cast<wint_t>(*a)) != std::towlower(static_cast<wint_t>(*b))) return false;
  }
  return *a == *b;
}

bool IsKnownPrivilege(const wchar_t* name) {
  for (const wchar_t* known : kKnownPrivileges) {
    if (SameName(known, name)) return true;
  }
  return false;
}

std::string ReadWholeFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

std::string BaseName(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// The executable's file name: from the exe link when readable (only our own user's processes
// unless root); else the first command-line word when the kernel's short name (comm, cut to 15
// bytes) is a prefix of it, which rules out rewritten titles like "sshd: user@pts/0"; else comm.
std::string ProcessName(const std::string& pid) {
  const std::string dir = "/proc/" + pid + "/";
  char target[4096];
  const ssize_t length = readlink((dir + "exe").c_str(), target, sizeof(target) - 1);
  if (length > 0) {
    std::string exe(target, static_cast<std::size_t>(length));
    const std::string deleted = " (deleted)";
    if (exe.size() > deleted.size() &&
        exe.compare(exe.size() - deleted.size(), deleted.size(), deleted) == 0) {
      exe.resize(exe.size() - deleted.size());
    }
    return BaseName(exe);
  }
  std::string comm = ReadWholeFile(dir + "comm");
  if (!comm.empty() && comm.back() == '\n') comm.pop_back();
  const std::string cmdline = ReadWholeFile(dir + "cmdline");
  const std::string first = BaseName(cmdline.substr(0, cmdline.find('\0')));
  if (!comm.empty() && first.compare(0, comm.size(), comm) == 0) return first;
  return comm;
}

bool IsPid(const char* name) {
  if (*name == '\0') return false;
  for (; *name != '\0'; ++name) {
    if (*name < '0' || *name > '9') return false;
  }
  return true;
}

}  // namespace

bool IsWin64OS() {
  struct utsname system;
  if (uname(&system) != 0) return false;
  for (const char* machine : k64BitMachines) {
    if (std::strcmp(system.machine, machine) == 0) return true;
  }
  return false;
}

bool GetProcessList(std::map<DWORD, std::wstring>& processes) {
  processes.clear();
  DIR* proc = opendir("/proc");
  if (proc == nullptr) return false;
  while (const dirent* entry = readdir(proc)) {
    if (!IsPid(entry->d_name)) continue;
    const std::string name = ProcessName(entry->d_name);
    if (name.empty()) continue;  // ended while we looked
    processes[static_cast<DWORD>(std::strtoul(entry->d_name, nullptr, 10))] =
        detail::Utf8ToWide(name.data(), name.size());
  }
  closedir(proc);
  return !processes.empty();
}

bool IsRunasAdmin() { return geteuid() == 0; }

namespace detail {

DWORD AdjustPrivilege(const wchar_t* privilege, bool /*enable: root holds every privilege*/) {
  if (!IsKnownPrivilege(privilege)) return kErrorNoSuchPrivilege;
  return geteuid() == 0 ? 0 : linux_impl::kErrorPrivilegeNotHeld;
}

}  // namespace detail
}  // namespace DE
