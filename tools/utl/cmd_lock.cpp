// Named-mutex commands, for trying cross-process locking by hand from two terminals.
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include "DELock.h"
#include "DEString.h"
#include "command.h"

namespace utl {
namespace {

bool ParseSeconds(const std::string& text, int& seconds) {
  seconds = DE::StringToInt32Def(text, -1);
  return seconds >= 0;
}

// Takes the mutex and keeps it for `seconds`, or until Enter or end of input when none is given.
int Lock(const std::vector<std::string>& args) {
  int seconds = -1;
  if (args.empty() || args.size() > 2) return UsageError("lock", "expects a name");
  if (args.size() == 2 && !ParseSeconds(args[1], seconds)) {
    return UsageError("lock", "not a number of seconds: '" + args[1] + "'");
  }
  const std::wstring name = DE::StringProc::StringToWStringByUTF8(args[0]);
  DE::NamedMutexLock lock(name.c_str());
  PrintLine("waiting...");
  lock.Lock();
  PrintLine("locked " + args[0]);
  if (seconds >= 0) {
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
  } else {
    for (int c = std::getchar(); c != '\n' && c != EOF; c = std::getchar()) {
    }
  }
  lock.UnLock();
  PrintLine("released");
  return 0;
}

// Prints TryLock's result: 1 taken (then released again), 0 not taken or abandoned.
int TryLock(const std::vector<std::string>& args) {
  if (args.size() != 1) return UsageError("trylock", "expects a name");
  const std::wstring name = DE::StringProc::StringToWStringByUTF8(args[0]);
  DE::NamedMutexLock lock(name.c_str());
  const int result = lock.TryLock();
  PrintLine(std::to_string(result));
  if (result != 0) lock.UnLock();
  return 0;
}

}  // namespace

UTL_COMMAND("lock", "<name> [seconds]", "hold a named mutex (until Enter without seconds)", Lock);
UTL_COMMAND("trylock", "<name>", "try a named mutex once (1 ms); prints 1 or 0", TryLock);

}  // namespace utl
