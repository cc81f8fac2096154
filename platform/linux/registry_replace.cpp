// Hive replacement at the next start of the system. Linux-only code.
#include "platform/linux/registry_replace.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>

#include "PxsLog.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/registry_error.h"
#include "platform/linux/system_calls.h"
#include "platform/linux/system_root.h"

namespace DE::detail::linux_impl {

namespace {

std::string RequestFile(const std::string& hiveFile) { return hiveFile + ".replace"; }

// The id the kernel gives this boot; "" when unknown (then requests wait).
std::string BootId() {
  std::string id;
  return ReadFirstLine(UnderSystemRoot("proc/sys/kernel/random/boot_id"), id) ? id : std::string();
}

bool WriteAll(int fd, const std::string& text) {
  size_t done = 0;
  while (done < text.size()) {
    const ssize_t written = Sys().write(fd, text.data() + done, text.size() - done);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    done += static_cast<size_t>(written);
  }
  return true;
}

// Writes the request next to the hive in one rename, owned like the hive so that whoever may
// write the hive may also remove the request once it is carried out.
LONG WriteRequest(const std::string& hiveFile, const std::string& bootId, const std::string& newFile) {
  struct stat hive;
  if (Sys().stat(hiveFile.c_str(), &hive) != 0) return static_cast<LONG>(LastWin32ErrorFromErrno());
  const std::string request = RequestFile(hiveFile);
  const std::string temporary = request + ".new";
  const Descriptor file(Sys().open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  if (!file) return static_cast<LONG>(LastWin32ErrorFromErrno());
  const bool written = WriteAll(file.Get(), bootId + "\n" + newFile + "\n") &&
                       Sys().fchown(file.Get(), hive.st_uid, hive.st_gid) == 0 &&
                       Sys().fsync(file.Get()) == 0;
  if (!written || Sys().rename(temporary.c_str(), request.c_str()) != 0) {
    const LONG code = static_cast<LONG>(LastWin32ErrorFromErrno());
    Sys().unlink(temporary.c_str());
    return code;
  }
  return 0;
}

void CarryOut(const std::string& hiveFile, const std::string& newFile) {
  std::shared_ptr<Hive> hive;
  std::shared_ptr<Hive> replacement;
  LONG code = Hive::Open(hiveFile, false, true, true, 0, hive);
  if (code == 0) code = Hive::Open(newFile, false, false, true, 0, replacement);
  if (code == 0) code = hive->ReplaceTree(kHiveRootKey, *replacement, kHiveRootKey);
  if (code != 0) {
    PXSLOGE("Util", "Registry: the replacement of " + hiveFile + " by " + newFile + " failed with error " +
                        std::to_string(code) + "; the hive stays as it was");
  }
}

}  // namespace

LONG ScheduleHiveReplace(Hive& hive, const std::string& newFile, const std::string& oldFile) {
  std::shared_ptr<Hive> replacement;
  LONG code = Hive::Open(newFile, false, false, true, 0, replacement);
  if (code != 0) return code;
  char absolute[PATH_MAX];
  if (::realpath(newFile.c_str(), absolute) == nullptr) return static_cast<LONG>(LastWin32ErrorFromErrno());
  struct stat existing;
  if (Sys().stat(oldFile.c_str(), &existing) == 0) return static_cast<LONG>(kErrorAlreadyExists);
  std::shared_ptr<Hive> backup;
  code = Hive::Open(oldFile, true, true, true, ::geteuid(), backup);
  if (code == 0) code = backup->ReplaceTree(kHiveRootKey, hive, kHiveRootKey);
  if (code == 0) code = WriteRequest(hive.File(), BootId(), absolute);
  // Nothing of a failed call stays behind.
  if (code != 0) Sys().unlink(oldFile.c_str());
  return code;
}

void ApplyPendingHiveReplace(const std::string& hiveFile) {
  const std::string request = RequestFile(hiveFile);
  // Only a process that may write the hive carries the request out; the others read the hive
  // as it stands until one does.
  // Closing the descriptor at the end drops the flock() taken below.
  const Descriptor file(Sys().open(request.c_str(), O_RDWR | O_CLOEXEC, 0));
  if (!file) return;
  // Processes starting together take turns; the first one carries the request out and removes
  // it, the others find it gone once they hold the lock.
  if (Sys().flock(file.Get(), LOCK_EX) != 0) return;
  struct stat opened;
  struct stat current;
  if (Sys().fstat(file.Get(), &opened) != 0 || Sys().stat(request.c_str(), &current) != 0 ||
      opened.st_ino != current.st_ino) {
    return;
  }
  std::string text;
  if (!ReadSmallFile(request, text, 2 * PATH_MAX)) return;
  const size_t end = text.find('\n');
  const std::string madeIn = text.substr(0, end);
  const std::string now = BootId();
  if (now.empty() || madeIn == now) return;  // not restarted yet
  std::string newFile = end == std::string::npos ? std::string() : text.substr(end + 1);
  if (!newFile.empty() && newFile.back() == '\n') newFile.pop_back();
  CarryOut(hiveFile, newFile);
  Sys().unlink(request.c_str());
}

}  // namespace DE::detail::linux_impl
