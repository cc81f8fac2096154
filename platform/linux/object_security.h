// Who may open the library's named objects on Linux: the substitute for a Windows security
// descriptor that allows authenticated users and administrators and denies guests and anonymous.
//
// Model: read and write for every local user (mode 0666; root passes anyway), and POSIX ACL
// entries granting nothing to the anonymous principals, the kernel's overflow user and group
// (/proc/sys/kernel/overflowuid and overflowgid, normally 65534 "nobody"/"nogroup"), which Linux
// uses for unauthenticated and guest access. ACL entries for a named user or group take precedence
// over "other", so the kernel itself keeps those principals out.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include "UtilPlatform.h"

namespace DE::detail::linux_impl {

struct ObjectSecurity {
  mode_t mode;         // permission bits for owner, group and others
  bool denyAnonymous;  // add ACL entries with no access for the overflow user and group
};

// The descriptor DE::CreateDACL hands out: mode 0666, anonymous denied.
const ObjectSecurity& SharedObjectSecurity();
// `descriptor` as one of the library's descriptors; null for anything else (never dereferenced
// then), which callers treat as the default: owner only.
const ObjectSecurity* FindObjectSecurity(const void* descriptor);

// The overflow ("anonymous") ids; 65534 when /proc does not tell.
uid_t AnonymousUid();
gid_t AnonymousGid();
// True when this process runs as an anonymous principal (effective uid, effective gid or a
// supplementary group); root never counts.
bool CallerIsAnonymous();
// True for a file owned by an anonymous user or group, which the library does not trust.
bool OwnedByAnonymous(const struct stat& info);

// Gives the open file `fd` the permissions of `security` (null: owner only, 0600). Where ACLs
// cannot be stored the file is left owner-only and an error is logged. Returns false only when
// even the mode could not be set.
bool ApplyObjectSecurity(int fd, const ObjectSecurity* security);

}  // namespace DE::detail::linux_impl
