// Permissions of the library's named objects on Linux (mode bits and POSIX ACLs).
#include "platform/linux/object_security.h"

#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "PxsLog.h"
#include "platform/linux/system_calls.h"

namespace DE::detail::linux_impl {
namespace {

const ObjectSecurity kShared = {0666, true};
const mode_t kOwnerOnly = 0600;
const unsigned long kDefaultOverflowId = 65534;

// Tags and layout of the "system.posix_acl_access" attribute (linux/posix_acl_xattr.h):
// a little-endian version word, then (tag, permissions, id) entries sorted by tag and id.
enum AclTag : std::uint16_t {
  kUserObj = 0x01,
  kUser = 0x02,
  kGroupObj = 0x04,
  kGroup = 0x08,
  kMask = 0x10,
  kOther = 0x20
};
const std::uint32_t kAclVersion = 2;
const std::uint32_t kUndefinedId = 0xFFFFFFFF;

unsigned long ReadOverflowId(const char* path) {
  unsigned long id = kDefaultOverflowId;
  if (std::FILE* file = std::fopen(path, "re")) {
    if (std::fscanf(file, "%lu", &id) != 1) id = kDefaultOverflowId;
    std::fclose(file);
  }
  return id;
}

void PutLittleEndian(std::vector<unsigned char>& out, std::uint32_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) out.push_back(static_cast<unsigned char>(value >> (8 * i)));
}

void PutEntry(std::vector<unsigned char>& out, AclTag tag, unsigned permissions, std::uint32_t id) {
  PutLittleEndian(out, tag, 2);
  PutLittleEndian(out, permissions & 7u, 2);
  PutLittleEndian(out, id, 4);
}

// The ACL for `mode` plus "no access" entries for the anonymous user and group.
std::vector<unsigned char> AnonymousDenyingAcl(mode_t mode) {
  const unsigned owner = (mode >> 6) & 7u;
  const unsigned group = (mode >> 3) & 7u;
  std::vector<unsigned char> acl;
  PutLittleEndian(acl, kAclVersion, 4);
  PutEntry(acl, kUserObj, owner, kUndefinedId);
  PutEntry(acl, kUser, 0, static_cast<std::uint32_t>(AnonymousUid()));
  PutEntry(acl, kGroupObj, group, kUndefinedId);
  PutEntry(acl, kGroup, 0, static_cast<std::uint32_t>(AnonymousGid()));
  PutEntry(acl, kMask, group, kUndefinedId);  // the mask bounds named entries and the owning group
  PutEntry(acl, kOther, mode & 7u, kUndefinedId);
  return acl;
}

bool InSupplementaryGroups(gid_t gid) {
  const int count = getgroups(0, nullptr);
  if (count <= 0) return false;
  std::vector<gid_t> groups(static_cast<std::size_t>(count));
  const int got = getgroups(count, groups.data());
  for (int i = 0; i < got; ++i) {
    if (groups[static_cast<std::size_t>(i)] == gid) return true;
  }
  return false;
}

}  // namespace

const ObjectSecurity& SharedObjectSecurity() { return kShared; }

const ObjectSecurity* FindObjectSecurity(const void* descriptor) {
  return descriptor == &kShared ? &kShared : nullptr;
}

uid_t AnonymousUid() {
  static const uid_t uid = static_cast<uid_t>(ReadOverflowId("/proc/sys/kernel/overflowuid"));
  return uid;
}

gid_t AnonymousGid() {
  static const gid_t gid = static_cast<gid_t>(ReadOverflowId("/proc/sys/kernel/overflowgid"));
  return gid;
}

bool CallerIsAnonymous() {
  if (geteuid() == 0) return false;
  return geteuid() == AnonymousUid() || getegid() == AnonymousGid() || InSupplementaryGroups(AnonymousGid());
}

bool OwnedByAnonymous(const struct stat& info) {
  return info.st_uid == AnonymousUid() || info.st_gid == AnonymousGid();
}

bool ApplyObjectSecurity(int fd, const ObjectSecurity* security) {
  // fchmod, not the creation mode, so the process umask cannot narrow it.
  const mode_t mode = security != nullptr ? security->mode : kOwnerOnly;
  if (Sys().fchmod(fd, mode) != 0) return false;
  if (security == nullptr || !security->denyAnonymous) return true;
  const std::vector<unsigned char> acl = AnonymousDenyingAcl(mode);
  if (Sys().fsetxattr(fd, "system.posix_acl_access", acl.data(), acl.size(), 0) == 0) return true;
  // Without the deny entries the object must not be open to everyone.
  const int error = errno;
  PXSLOGE("Util", "cannot store the access list of a named object (" + std::string(std::strerror(error)) +
                      "); it stays private to its owner");
  return Sys().fchmod(fd, kOwnerOnly) == 0;
}

}  // namespace DE::detail::linux_impl
