// The registry operations over the hive store: handles, predefined roots, rights. Linux-only code.
#include "platform/linux/registry_store.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <set>
#include <vector>

#include "platform/linux/registry_error.h"
#include "platform/linux/registry_mounts.h"
#include "platform/linux/registry_replace.h"
#include "platform/linux/system_calls.h"

namespace DE::detail::linux_impl {

namespace {

constexpr DWORD kWriteRights =
    KEY_SET_VALUE | KEY_CREATE_SUB_KEY | KEY_CREATE_LINK | DELETE | 0x40000 | 0x80000;
constexpr DWORD kMaximumAllowed = 0x02000000;
constexpr DWORD kGenericAll = 0x10000000;
constexpr DWORD kGenericWrite = 0x40000000;
constexpr DWORD kGenericRead = 0x80000000;
constexpr size_t kMaxKeyNameUnits = 255;
const char* const kDefaultDirectory = "/var/lib/util/registry";
constexpr LONG kInvalidHandleCode = 6;  // ERROR_INVALID_HANDLE

// An open key: a key of a hive, or the HKEY_USERS root that lists the user hives.
struct KeyHandle {
  std::shared_ptr<Hive> hive;
  KeyId id = kHiveRootKey;
  DWORD access = 0;
  bool usersRoot = false;
};

std::mutex& StoreMutex() {
  static std::mutex mutex;
  return mutex;
}

std::set<KeyHandle*>& LiveHandles() {
  static std::set<KeyHandle*> handles;
  return handles;
}

std::map<std::string, std::shared_ptr<Hive>>& HiveCache() {
  static std::map<std::string, std::shared_ptr<Hive>> hives;
  return hives;
}

std::string Narrow(const std::u16string& text) {
  std::string out;
  for (char16_t unit : text) out.push_back(unit < 0x80 ? static_cast<char>(unit) : '?');
  return out;
}

bool EnsureDirectory(const std::string& path, mode_t mode) {
  if (Sys().mkdir(path.c_str(), mode) == 0 || errno == EEXIST) return true;
  const size_t slash = path.find_last_of('/');
  if (slash == std::string::npos || slash == 0) return false;
  return EnsureDirectory(path.substr(0, slash), mode) &&
         (Sys().mkdir(path.c_str(), mode) == 0 || errno == EEXIST);
}

bool CanWrite(const std::string& file) {
  if (Sys().faccessat(AT_FDCWD, file.c_str(), W_OK, AT_EACCESS) == 0) return true;
  // A file still to be made: the nearest folder that exists decides.
  std::string folder = file;
  while (errno == ENOENT) {
    const size_t slash = folder.find_last_of('/');
    if (slash == std::string::npos || slash == 0) return false;
    folder.resize(slash);
    if (Sys().faccessat(AT_FDCWD, folder.c_str(), W_OK, AT_EACCESS) == 0) return true;
  }
  return false;
}

// A SID as a file name: "S-" then digits and dashes, upper-cased.
bool SidFileName(const std::u16string& sid, std::string& name) {
  if (sid.size() < 3 || sid.size() > 184) return false;
  name = Narrow(sid);
  std::transform(name.begin(), name.end(), name.begin(), [](char c) { return c == 's' ? 'S' : c; });
  if (name.compare(0, 2, "S-") != 0) return false;
  return std::all_of(name.begin() + 2, name.end(), [](char c) { return (c >= '0' && c <= '9') || c == '-'; });
}

uid_t OwnerOfSid(const std::string& sid) {
  const std::string prefix = "S-1-22-1-";
  if (sid.compare(0, prefix.size(), prefix) != 0) return 0;
  return static_cast<uid_t>(std::strtoul(sid.c_str() + prefix.size(), nullptr, 10));
}

std::string OwnSid() { return "S-1-22-1-" + std::to_string(::geteuid()); }

std::string UsersFolder() { return StoreDirectory() + "/users"; }
std::string UserHiveFile(const std::string& sid) { return UsersFolder() + "/" + sid + ".hive"; }
std::string MachineHiveFile() { return StoreDirectory() + "/machine.hive"; }
// Hives loaded below HKEY_LOCAL_MACHINE.
std::string MachineMountFolder() { return StoreDirectory() + "/machine"; }

// Like /tmp: every user may add its own hive, none may remove another's.
void EnsureUsersFolder() {
  EnsureDirectory(StoreDirectory(), 0755);
  if (Sys().mkdir(UsersFolder().c_str(), 01777) == 0) Sys().chmod(UsersFolder().c_str(), 01777);
}

// The hive behind a file, opened once per process. create makes a missing file when allowed.
LONG GetHive(const std::string& file, bool create, bool isPrivate, uid_t owner, std::shared_ptr<Hive>& hive) {
  std::lock_guard<std::mutex> lock(StoreMutex());
  auto found = HiveCache().find(file);
  if (found != HiveCache().end()) {
    struct stat info;
    if (Sys().stat(file.c_str(), &info) == 0) {
      hive = found->second;
      return 0;
    }
    HiveCache().erase(found);  // unloaded or removed meanwhile
  }
  const bool writable = CanWrite(file);
  if (create && writable) {
    const std::string folder = file.substr(0, file.find_last_of('/'));
    if (folder == UsersFolder()) {
      EnsureUsersFolder();
    } else {
      EnsureDirectory(folder, 0755);
    }
  }
  // A Unix user's hive must belong to that user (or root): a file another user planted first
  // is refused.
  const std::string base = file.substr(file.find_last_of('/') + 1);
  struct stat existing;
  if (base.compare(0, 9, "S-1-22-1-") == 0 && Sys().stat(file.c_str(), &existing) == 0) {
    const uid_t expected = OwnerOfSid(base.substr(0, base.size() - 5));
    if (existing.st_uid != expected && existing.st_uid != 0) return static_cast<LONG>(kErrorAccessDenied);
  }
  if (writable) ApplyPendingHiveReplace(file);
  const LONG code = Hive::Open(file, create, writable, isPrivate, owner, hive);
  if (code == 0) HiveCache()[file] = hive;
  return code;
}

LONG SplitPath(const std::u16string& path, std::vector<std::u16string>& parts) {
  if (!path.empty() && path[0] == u'\\') return kRegErrorBadPathname;
  std::u16string part;
  for (size_t i = 0; i <= path.size(); ++i) {
    if (i == path.size() || path[i] == u'\\') {
      if (part.size() > kMaxKeyNameUnits) return static_cast<LONG>(kErrorInvalidParameter);
      if (!part.empty()) parts.push_back(part);
      part.clear();
    } else {
      part.push_back(path[i]);
    }
  }
  return 0;
}

DWORD MapGeneric(DWORD access) {
  if (access & kGenericAll) access |= KEY_ALL_ACCESS;
  if (access & kGenericRead) access |= KEY_READ;
  if (access & kGenericWrite) access |= KEY_WRITE;
  return access & ~(kGenericAll | kGenericRead | kGenericWrite);
}

KeyHandle* LiveHandle(HKEY key) {
  KeyHandle* handle = reinterpret_cast<KeyHandle*>(key);
  std::lock_guard<std::mutex> lock(StoreMutex());
  return LiveHandles().count(handle) ? handle : nullptr;
}

bool IsPredefined(HKEY key) {
  const std::intptr_t value = reinterpret_cast<std::intptr_t>(key);
  return value >= static_cast<std::int32_t>(0x80000000u) && value <= static_cast<std::int32_t>(0x800000FFu);
}

// A predefined root as a handle record (not registered); its rights are what the hive allows.
LONG ResolvePredefined(HKEY key, bool create, KeyHandle& out) {
  std::vector<std::u16string> prefix;
  std::string file;
  bool isPrivate = false;
  uid_t owner = 0;
  const std::string machine = MachineHiveFile();
  if (key == HKEY_LOCAL_MACHINE) {
    file = machine;
  } else if (key == HKEY_CLASSES_ROOT) {
    file = machine;
    prefix = {u"SOFTWARE", u"Classes"};
  } else if (key == HKEY_CURRENT_CONFIG) {
    file = machine;
    prefix = {u"SYSTEM", u"CurrentControlSet", u"Hardware Profiles", u"Current"};
  } else if (key == HKEY_CURRENT_USER) {
    file = UserHiveFile(OwnSid());
    isPrivate = true;
    owner = ::geteuid();
  } else if (key == HKEY_USERS) {
    out = KeyHandle();
    out.usersRoot = true;
    out.access = KEY_READ;
    return 0;
  } else {
    return kInvalidHandleCode;
  }
  std::shared_ptr<Hive> hive;
  LONG code = GetHive(file, create || !prefix.empty(), isPrivate, owner, hive);
  if (code != 0) return code;
  KeyId id = kHiveRootKey;
  if (!prefix.empty()) {
    bool created = false;
    code = hive->Writable() ? hive->Create(kHiveRootKey, prefix, id, created)
                            : hive->Find(kHiveRootKey, prefix, id);
    if (code != 0) return code;
  }
  out.hive = hive;
  out.id = id;
  out.usersRoot = false;
  out.access = hive->Writable() ? KEY_ALL_ACCESS : KEY_READ;
  return 0;
}

// The handle record behind a key: a live handle or a predefined root.
LONG Resolve(HKEY key, bool create, KeyHandle& out) {
  if (key == nullptr) return kInvalidHandleCode;
  if (IsPredefined(key)) return ResolvePredefined(key, create, out);
  KeyHandle* handle = LiveHandle(key);
  if (handle == nullptr) return kInvalidHandleCode;
  out = *handle;
  return 0;
}

LONG NeedRight(const KeyHandle& key, DWORD right) {
  return (key.access & right) == right ? 0 : static_cast<LONG>(kErrorAccessDenied);
}

HKEY Register(const KeyHandle& record) {
  KeyHandle* handle = new KeyHandle(record);
  std::lock_guard<std::mutex> lock(StoreMutex());
  LiveHandles().insert(handle);
  return reinterpret_cast<HKEY>(handle);
}

// Grants the requested rights when the hive allows them.
LONG GrantRights(const Hive& hive, DWORD requested, DWORD& granted) {
  requested = MapGeneric(requested);
  if (requested & kMaximumAllowed) {
    requested = (requested & ~kMaximumAllowed) | (hive.Writable() ? KEY_ALL_ACCESS : KEY_READ);
  }
  if ((requested & kWriteRights) != 0 && !hive.Writable()) return static_cast<LONG>(kErrorAccessDenied);
  granted = requested;
  return 0;
}

// The hive of HKEY_USERS\<name>: a user's own or a loaded one. create makes a user's hive, for
// root or for the caller's own SID.
LONG UserHive(const std::u16string& name, bool create, std::shared_ptr<Hive>& hive) {
  std::string sid;
  const bool isSid = SidFileName(name, sid);
  std::string file = FindMountedHive(UsersFolder(), name);
  if (file.empty()) {
    if (!create) return static_cast<LONG>(kErrorFileNotFound);
    if (!isSid || (::geteuid() != 0 && sid != OwnSid())) return static_cast<LONG>(kErrorAccessDenied);
    file = UserHiveFile(sid);
  }
  return GetHive(file, create, true, isSid ? OwnerOfSid(sid) : 0, hive);
}

bool IsMachineRoot(const KeyHandle& key) {
  return !key.usersRoot && key.id == kHiveRootKey && key.hive->File() == MachineHiveFile();
}

// Moves `from`, a root that holds hives as keys, into the hive the path's first part names; that
// part is consumed. Below HKEY_LOCAL_MACHINE a name that is not a loaded hive is an ordinary key:
// `from` and parts then stay as they are.
LONG EnterMountedHive(KeyHandle& from, std::vector<std::u16string>& parts, bool create) {
  if (parts.empty() || !(from.usersRoot || IsMachineRoot(from))) return 0;
  std::shared_ptr<Hive> hive;
  if (from.usersRoot) {
    const LONG code = UserHive(parts.front(), create, hive);
    if (code != 0) return code;
  } else {
    const std::string file = FindMountedHive(MachineMountFolder(), parts.front());
    if (file.empty()) return 0;
    const LONG code = GetHive(file, false, true, 0, hive);
    if (code != 0) return code;
  }
  from.hive = std::move(hive);
  from.id = kHiveRootKey;
  from.usersRoot = false;
  parts.erase(parts.begin());
  return 0;
}

// The handle record of base and the components of the path below it.
LONG ResolvePath(HKEY base, const std::u16string& subKey, bool create, KeyHandle& from,
                 std::vector<std::u16string>& parts) {
  const LONG code = SplitPath(subKey, parts);
  return code != 0 ? code : Resolve(base, create, from);
}

LONG OpenOrCreate(HKEY base, const std::u16string& subKey, DWORD access, bool create, HKEY* result,
                  DWORD* disposition) {
  if (result == nullptr) return static_cast<LONG>(kErrorInvalidParameter);
  std::vector<std::u16string> parts;
  KeyHandle from;
  LONG code = ResolvePath(base, subKey, create, from, parts);
  if (code != 0) return code;
  if (from.usersRoot && parts.empty()) {
    *result = Register(from);
    if (disposition != nullptr) *disposition = 2;  // REG_OPENED_EXISTING_KEY
    return 0;
  }
  code = EnterMountedHive(from, parts, create);
  if (code != 0) return code;
  KeyHandle opened;
  opened.hive = from.hive;
  code = GrantRights(*from.hive, access, opened.access);
  if (code != 0) return code;
  bool created = false;
  code = create ? from.hive->Create(from.id, parts, opened.id, created)
                : from.hive->Find(from.id, parts, opened.id);
  if (code != 0) return code;
  *result = Register(opened);
  if (disposition != nullptr)
    *disposition = created ? 1 : 2;  // REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY
  return 0;
}

// The hive key of a handle that must not be the HKEY_USERS root.
LONG HiveKey(HKEY key, KeyHandle& out) {
  const LONG code = Resolve(key, false, out);
  if (code != 0) return code;
  return out.usersRoot ? static_cast<LONG>(kErrorAccessDenied) : 0;
}

// The sub-key names of a root that holds hives: the hive files below HKEY_USERS; the machine
// hive's own keys and the loaded hives below HKEY_LOCAL_MACHINE.
LONG RootKeyNames(const KeyHandle& key, std::vector<std::u16string>& names) {
  if (key.usersRoot) {
    names = MountedNames(UsersFolder());
    return 0;
  }
  names = MountedNames(MachineMountFolder());
  std::u16string name;
  for (DWORD index = 0;; ++index) {
    const LONG code = key.hive->EnumKey(key.id, index, name);
    if (code == kRegErrorNoMoreItems) break;
    if (code != 0) return code;
    names.push_back(name);
  }
  std::sort(names.begin(), names.end(),
            [](const std::u16string& a, const std::u16string& b) { return FoldName(a) < FoldName(b); });
  return 0;
}

bool IsRoot() { return ::geteuid() == 0; }

}  // namespace

std::string StoreDirectory() {
  const char* setting = std::getenv("UTIL_REGISTRY_DIR");
  return setting != nullptr && setting[0] != '\0' ? std::string(setting) : std::string(kDefaultDirectory);
}

LONG StoreOpenKey(HKEY base, const std::u16string& subKey, DWORD access, HKEY* result) {
  return OpenOrCreate(base, subKey, access, false, result, nullptr);
}

LONG StoreCreateKey(HKEY base, const std::u16string& subKey, DWORD access, HKEY* result, DWORD* disposition) {
  return OpenOrCreate(base, subKey, access, true, result, disposition);
}

LONG StoreQueryValue(HKEY key, const std::u16string& name, DWORD* type, BYTE* data, DWORD* size) {
  if (data != nullptr && size == nullptr) return static_cast<LONG>(kErrorInvalidParameter);
  KeyHandle handle;
  LONG code = Resolve(key, false, handle);
  if (code != 0) return code;
  if (handle.usersRoot) return static_cast<LONG>(kErrorFileNotFound);
  code = NeedRight(handle, KEY_QUERY_VALUE);
  if (code != 0) return code;
  DWORD valueType = 0;
  std::string bytes;
  code = handle.hive->QueryValue(handle.id, name, valueType, bytes);
  if (code != 0) return code;
  if (type != nullptr) *type = valueType;
  if (size == nullptr) return 0;
  const DWORD needed = static_cast<DWORD>(bytes.size());
  if (data != nullptr) {
    if (*size < needed) {
      *size = needed;
      return kRegErrorMoreData;
    }
    std::memcpy(data, bytes.data(), bytes.size());
  }
  *size = needed;
  return 0;
}

LONG StoreSetValue(HKEY key, const std::u16string& name, DWORD type, const BYTE* data, DWORD size) {
  if (data == nullptr && size != 0) return static_cast<LONG>(kErrorNoAccess);
  KeyHandle handle;
  LONG code = HiveKey(key, handle);
  if (code == 0) code = NeedRight(handle, KEY_SET_VALUE);
  if (code != 0) return code;
  return handle.hive->SetValue(handle.id, name, type,
                               std::string(reinterpret_cast<const char*>(data), data == nullptr ? 0 : size));
}

LONG StoreDeleteValue(HKEY key, const std::u16string& name) {
  KeyHandle handle;
  LONG code = HiveKey(key, handle);
  if (code == 0) code = NeedRight(handle, KEY_SET_VALUE);
  if (code != 0) return code;
  return handle.hive->DeleteValue(handle.id, name);
}

LONG StoreDeleteKey(HKEY base, const std::u16string& subKey) {
  std::vector<std::u16string> parts;
  KeyHandle from;
  LONG code = ResolvePath(base, subKey, false, from, parts);
  if (code != 0) return code;
  const bool hiveRoot = from.usersRoot || IsMachineRoot(from);
  code = EnterMountedHive(from, parts, false);
  if (code != 0) return code;
  // A hive's own root key is not deleted: it goes by unloading.
  if (from.usersRoot || (hiveRoot && !IsMachineRoot(from) && parts.empty())) {
    return static_cast<LONG>(kErrorAccessDenied);
  }
  if (!from.hive->Writable()) {
    KeyId target = 0;
    code = from.hive->Find(from.id, parts, target);
    return code != 0 ? code : static_cast<LONG>(kErrorAccessDenied);
  }
  return from.hive->DeleteKey(from.id, parts);
}

LONG StoreEnumKey(HKEY key, DWORD index, std::u16string& name) {
  KeyHandle handle;
  LONG code = Resolve(key, false, handle);
  if (code == 0) code = NeedRight(handle, KEY_ENUMERATE_SUB_KEYS);
  if (code != 0) return code;
  if (handle.usersRoot || (IsMachineRoot(handle) && !MountedNames(MachineMountFolder()).empty())) {
    std::vector<std::u16string> names;
    code = RootKeyNames(handle, names);
    if (code != 0) return code;
    if (index >= names.size()) return kRegErrorNoMoreItems;
    name = names[index];
    return 0;
  }
  return handle.hive->EnumKey(handle.id, index, name);
}

LONG StoreEnumValue(HKEY key, DWORD index, std::u16string& name) {
  KeyHandle handle;
  LONG code = Resolve(key, false, handle);
  if (code == 0) code = NeedRight(handle, KEY_QUERY_VALUE);
  if (code != 0) return code;
  if (handle.usersRoot) return kRegErrorNoMoreItems;
  return handle.hive->EnumValue(handle.id, index, name);
}

LONG StoreQueryInfoKey(HKEY key, HiveKeyInfo& info) {
  KeyHandle handle;
  LONG code = Resolve(key, false, handle);
  if (code == 0) code = NeedRight(handle, KEY_QUERY_VALUE);
  if (code != 0) return code;
  if (handle.usersRoot) {
    info = HiveKeyInfo();
    info.lastWrite = FileTimeNow();
  } else {
    code = handle.hive->QueryInfo(handle.id, info);
    if (code != 0 || !IsMachineRoot(handle)) return code;
  }
  // Loaded hives count as sub-keys of their root.
  for (const std::u16string& name : MountedNames(handle.usersRoot ? UsersFolder() : MachineMountFolder())) {
    ++info.subKeys;
    info.maxSubKeyLen = std::max<DWORD>(info.maxSubKeyLen, static_cast<DWORD>(name.size()));
  }
  return 0;
}

LONG StoreFlushKey(HKEY key) {
  KeyHandle handle;
  return Resolve(key, false, handle);
}

LONG StoreCloseKey(HKEY key) {
  if (IsPredefined(key)) return 0;
  KeyHandle* handle = reinterpret_cast<KeyHandle*>(key);
  {
    std::lock_guard<std::mutex> lock(StoreMutex());
    if (LiveHandles().erase(handle) == 0) return kInvalidHandleCode;
  }
  delete handle;
  return 0;
}

LONG StoreConnect(const std::u16string& machine, HKEY root, HKEY* result) {
  if (result == nullptr) return static_cast<LONG>(kErrorInvalidParameter);
  std::u16string name = machine;
  while (!name.empty() && name[0] == u'\\') name.erase(0, 1);
  char host[256] = {};
  ::gethostname(host, sizeof(host) - 1);
  const std::string wanted = Narrow(name);
  const bool local = name.empty() || strcasecmp(wanted.c_str(), host) == 0 ||
                     strcasecmp(wanted.c_str(), "localhost") == 0 || wanted == ".";
  if (!local) return kRegErrorBadNetPath;
  if (root != HKEY_LOCAL_MACHINE && root != HKEY_USERS) return kInvalidHandleCode;
  return StoreOpenKey(root, u"", kMaximumAllowed, result);
}

LONG StoreSaveKey(HKEY key, const std::string& file) {
  KeyHandle handle;
  LONG code = HiveKey(key, handle);
  if (code == 0) code = NeedRight(handle, KEY_QUERY_VALUE);
  if (code != 0) return code;
  struct stat info;
  if (Sys().stat(file.c_str(), &info) == 0) return static_cast<LONG>(kErrorAlreadyExists);
  std::shared_ptr<Hive> target;
  code = Hive::Open(file, true, true, true, ::geteuid(), target);
  if (code != 0) return code;
  code = target->ReplaceTree(kHiveRootKey, *handle.hive, handle.id);
  if (code != 0) Sys().unlink(file.c_str());
  return code;
}

LONG StoreRestoreKey(HKEY key, const std::string& file) {
  if (!IsRoot()) return kRegErrorPrivilegeNotHeld;
  KeyHandle handle;
  LONG code = HiveKey(key, handle);
  if (code == 0) code = NeedRight(handle, KEY_SET_VALUE);
  if (code != 0) return code;
  std::shared_ptr<Hive> source;
  code = Hive::Open(file, false, false, true, 0, source);
  if (code != 0) return code;
  return handle.hive->ReplaceTree(handle.id, *source, kHiveRootKey);
}

LONG StoreLoadKey(HKEY root, const std::u16string& subKey, const std::string& file) {
  if (root != HKEY_USERS && root != HKEY_LOCAL_MACHINE) return static_cast<LONG>(kErrorInvalidParameter);
  if (!IsRoot()) return kRegErrorPrivilegeNotHeld;
  if (subKey.empty() || subKey.size() > kMaxKeyNameUnits || subKey.find(u'\\') != std::u16string::npos) {
    return static_cast<LONG>(kErrorInvalidParameter);
  }
  std::shared_ptr<Hive> check;
  LONG code = Hive::Open(file, false, false, true, 0, check);
  if (code != 0) return code;
  if (root == HKEY_USERS) {
    EnsureUsersFolder();
    return MountHive(UsersFolder(), subKey, file);
  }
  // A loaded hive does not hide a key of the machine hive.
  KeyHandle machine;
  code = ResolvePredefined(HKEY_LOCAL_MACHINE, true, machine);
  KeyId existing = 0;
  if (code == 0) code = machine.hive->Find(kHiveRootKey, {subKey}, existing);
  if (code == 0) return static_cast<LONG>(kErrorAlreadyExists);
  if (code != static_cast<LONG>(kErrorFileNotFound)) return code;
  return MountHive(MachineMountFolder(), subKey, file);
}

LONG StoreUnLoadKey(HKEY root, const std::u16string& subKey) {
  if (root != HKEY_USERS && root != HKEY_LOCAL_MACHINE) return static_cast<LONG>(kErrorInvalidParameter);
  if (!IsRoot()) return kRegErrorPrivilegeNotHeld;
  std::string link;
  const LONG code = UnmountHive(root == HKEY_USERS ? UsersFolder() : MachineMountFolder(), subKey, link);
  if (code == 0) {
    std::lock_guard<std::mutex> lock(StoreMutex());
    HiveCache().erase(link);
  }
  return code;
}

LONG StoreReplaceKey(HKEY base, const std::u16string& subKey, const std::string& newFile,
                     const std::string& oldFile) {
  if (!IsRoot()) return kRegErrorPrivilegeNotHeld;
  HKEY key = nullptr;
  LONG code = StoreOpenKey(base, subKey, KEY_ALL_ACCESS, &key);
  if (code != 0) return code;
  KeyHandle handle;
  code = HiveKey(key, handle);
  StoreCloseKey(key);
  if (code != 0) return code;
  // Only the root of a hive can be replaced.
  if (handle.id != kHiveRootKey) return static_cast<LONG>(kErrorInvalidParameter);
  return ScheduleHiveReplace(*handle.hive, newFile, oldFile);
}

}  // namespace DE::detail::linux_impl
