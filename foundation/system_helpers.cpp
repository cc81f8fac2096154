// Shared logic of the process and token helpers: running a command line with a time-out, and the
// privilege call's error reporting.
#include <algorithm>
#include <chrono>

#include "DESystem.h"
#include "foundation/command_process.h"
#include "foundation/last_error.h"
#include "foundation/system_helpers_binding.h"

namespace DE {
namespace {

constexpr DWORD kInfinite = 0xFFFFFFFF;
constexpr DWORD kWaitTimeout = 258;           // WAIT_TIMEOUT
constexpr DWORD kErrorInvalidParameter = 87;  // ERROR_INVALID_PARAMETER
// How often the output pipe is emptied while a command runs, so a chatty one never blocks.
constexpr DWORD kOutputPollMs = 10;

}  // namespace

bool SetTokenPrivilege(const wchar_t* privilege, bool enable, DWORD* error) {
  const DWORD code = privilege == nullptr || *privilege == L'\0' ? kErrorInvalidParameter
                                                                 : detail::AdjustPrivilege(privilege, enable);
  detail::SetLastErrorCode(code);
  if (error != nullptr) *error = code;
  return code == 0;
}

bool ExcuteCmdLine(const std::wstring& cmdLine, DWORD timeoutMs, DWORD* exitCode, std::string* output) {
  detail::CommandProcess process;
  if (cmdLine.empty() || !process.Start(cmdLine, output != nullptr)) return false;
  const auto start = std::chrono::steady_clock::now();
  DWORD code = 0;
  for (;;) {
    if (output != nullptr) process.ReadAvailable(*output);
    DWORD slice = output != nullptr ? kOutputPollMs : timeoutMs;
    if (timeoutMs != kInfinite) {
      const auto elapsed =
          std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
      if (elapsed.count() >= static_cast<long long>(timeoutMs)) {
        process.Kill();
        if (output != nullptr) process.ReadAvailable(*output);
        if (exitCode != nullptr) *exitCode = kWaitTimeout;
        return false;
      }
      slice = std::min<DWORD>(slice, timeoutMs - static_cast<DWORD>(elapsed.count()));
    }
    if (process.WaitForExit(slice, &code)) break;
  }
  if (output != nullptr) process.ReadAvailable(*output);  // what it wrote just before ending
  if (exitCode != nullptr) *exitCode = code;
  return true;
}

}  // namespace DE
