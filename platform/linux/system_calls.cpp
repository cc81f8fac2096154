// The table of system calls the Linux substitutes make. Only Linux-specific code goes in this file.
#include "platform/linux/system_calls.h"

#include <sys/file.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <cstdio>

#include "foundation/last_error.h"

namespace DE::detail::linux_impl {
namespace {

// Fixed-argument forms of the two variadic calls, so that every entry has a plain type.
int OpenFile(const char* path, int flags, mode_t mode) { return ::open(path, flags, mode); }
int ControlFile(int fd, int command, void* argument) { return ::fcntl(fd, command, argument); }

}  // namespace

// Function addresses only, so the table is constant-initialised: ready before any static
// constructor of the library or of its host runs. Same order as the members.
SystemCalls systemCalls = {
    &OpenFile,     // open
    &::close,      // close
    &::read,       // read
    &::write,      // write
    &::lseek,      // lseek
    &::ftruncate,  // ftruncate
    &::fsync,      // fsync
    &::fstat,      // fstat
    &ControlFile,  // fcntl
    &::flock,      // flock
    &::fchmod,     // fchmod
    &::fchown,     // fchown
    &::fsetxattr,  // fsetxattr
    &::stat,       // stat
    &::lstat,      // lstat
    &::access,     // access
    &::faccessat,  // faccessat
    &::mkdir,      // mkdir
    &::chmod,      // chmod
    &::unlink,     // unlink
    &::rename,     // rename
    &::linkat,     // linkat
    &::symlink,    // symlink
    &::shm_open,   // shm_open
    &::mmap,       // mmap
    &::munmap,     // munmap
};

const TestHooks& SystemCallTestHooks() {
  // The last error lives with the foundation bindings; tests read it here because the library
  // exports nothing else of its internals on Linux.
  static const TestHooks hooks = {&systemCalls, &GetLastErrorCode};
  return hooks;
}

}  // namespace DE::detail::linux_impl
