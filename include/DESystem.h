// Process and token helpers of the foundation library: machine word size, the process list,
// privileges, elevation and running a command line. Nothing here throws.
#pragma once

#include <map>
#include <string>

#include "UtilExport.h"
#include "UtilPlatform.h"

namespace DE {

// True when the operating system is 64-bit. Windows: a 64-bit build, or a 32-bit process under
// WOW64. Linux: the kernel's machine (uname) is a 64-bit one (x86_64, aarch64, ppc64, ppc64le,
// s390x, riscv64, loongarch64, mips64, sparc64).
UTIL_API bool IsWin64OS();

// Fills `processes` (cleared first) with process id -> executable file name without its folder
// ("svchost.exe"; Linux: the name of /proc/<pid>/exe, else of the first command-line word, else
// the kernel's short name). False when the list cannot be taken; `processes` is then empty.
UTIL_API bool GetProcessList(std::map<DWORD, std::wstring>& processes);

// Enables or disables a privilege ("SeDebugPrivilege", ...) in the process token. Windows:
// AdjustTokenPrivileges; true only when the privilege was really changed (not for
// ERROR_NOT_ALL_ASSIGNED). Linux has no token privileges: true when the process runs as root
// (euid 0) and the name is a known Windows privilege; ERROR_NO_SUCH_PRIVILEGE (1313) for an
// unknown name, ERROR_PRIVILEGE_NOT_HELD (1314) otherwise. `error` (optional) receives the Win32
// code, 0 on success; the code is also left as the thread's last error (GetLastError on Windows).
UTIL_API bool SetTokenPrivilege(const wchar_t* privilege, bool enable, DWORD* error = nullptr);

// True when the process runs with administrator rights. Windows: the Administrators group is
// enabled in its token (an elevated process under UAC). Linux: the effective uid is 0.
UTIL_API bool IsRunasAdmin();

// Runs a command line, waits up to timeoutMs (0xFFFFFFFF: no limit) for it to end and gives its
// exit code. Windows: CreateProcessW with no window (the line names the program, as for
// CreateProcessW; use "cmd.exe /c ..." for shell commands), in a job object so that a time-out
// ends everything it started. Linux: "/bin/sh -c <line>" (UTF-8) in a process group of its own;
// an exit by signal N reports 128 + N.
// With `output`, what the command writes to stdout and stderr is appended to it as raw bytes;
// otherwise those go nowhere. Standard input is empty.
// Returns true when the command ran and ended in time (*exitCode set). False when it cannot be
// started (*exitCode untouched) or did not end in time: then it is killed with all it started
// and *exitCode is WAIT_TIMEOUT (258).
UTIL_API bool ExcuteCmdLine(const std::wstring& cmdLine, DWORD timeoutMs, DWORD* exitCode = nullptr,
                            std::string* output = nullptr);

}  // namespace DE
