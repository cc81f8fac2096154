// The Linux registry: the advapi32 registry operations over the hive store, with their Windows
// meaning and Win32 codes.
//
// Layout below the store folder (UTIL_REGISTRY_DIR, default /var/lib/util/registry, read at
// every open of a predefined key):
//   machine.hive          HKEY_LOCAL_MACHINE; mode 0644, writable by its owner (root) only
//   users/<SID>.hive      HKEY_USERS\<SID>; mode 0600, owned by the user of S-1-22-1-<uid>
//                         (users/ is 01777: each user adds its own hive; one a stranger owns is refused)
//   users/<name>.hive     a hive loaded as HKEY_USERS\<name>: a link to its file
//   machine/<name>.hive   a hive loaded as HKEY_LOCAL_MACHINE\<name>: a link to its file
//   <hive>.replace        a replacement waiting for the next start of the system
// HKEY_CURRENT_USER is HKEY_USERS\S-1-22-1-<euid>. HKEY_CLASSES_ROOT is the machine's
// SOFTWARE\Classes and HKEY_CURRENT_CONFIG the machine's
// SYSTEM\CurrentControlSet\Hardware Profiles\Current (the keys Windows links them to; the
// per-user class overlay is not merged). The performance roots, HKEY_DYN_DATA and
// HKEY_CURRENT_USER_LOCAL_SETTINGS give ERROR_INVALID_HANDLE.
//
// Rights: a key opened for any write right (KEY_SET_VALUE, KEY_CREATE_SUB_KEY, KEY_CREATE_LINK,
// DELETE, WRITE_DAC, WRITE_OWNER) needs write access to its hive file, else the open fails with
// ERROR_ACCESS_DENIED, as Windows checks rights at open time; an operation needs the matching
// right on its handle. Hive operations (load, unload, restore, replace) need root, standing in
// for the backup and restore privileges (ERROR_PRIVILEGE_NOT_HELD otherwise); save needs read
// access only. Names are UTF-16 units; lengths count units.
#pragma once

#include <string>

#include "UtilPlatform.h"
#include "platform/linux/registry_hive.h"

namespace DE::detail::linux_impl {

LONG StoreOpenKey(HKEY base, const std::u16string& subKey, DWORD access, HKEY* result);
LONG StoreCreateKey(HKEY base, const std::u16string& subKey, DWORD access, HKEY* result, DWORD* disposition);
// *size in: buffer bytes (data may be null: size only); out: the data size.
LONG StoreQueryValue(HKEY key, const std::u16string& name, DWORD* type, BYTE* data, DWORD* size);
LONG StoreSetValue(HKEY key, const std::u16string& name, DWORD type, const BYTE* data, DWORD size);
LONG StoreDeleteValue(HKEY key, const std::u16string& name);
LONG StoreDeleteKey(HKEY base, const std::u16string& subKey);
LONG StoreEnumKey(HKEY key, DWORD index, std::u16string& name);
LONG StoreEnumValue(HKEY key, DWORD index, std::u16string& name);
LONG StoreQueryInfoKey(HKEY key, HiveKeyInfo& info);
// Every write is durable when it returns; flushing only checks the handle.
LONG StoreFlushKey(HKEY key);
LONG StoreCloseKey(HKEY key);
// Remote machines are not served: ERROR_BAD_NETPATH; a null or empty name gives the local root.
LONG StoreConnect(const std::u16string& machine, HKEY root, HKEY* result);
// Hive files: databases of this store's own format, made by StoreSaveKey.
LONG StoreSaveKey(HKEY key, const std::string& file);
LONG StoreRestoreKey(HKEY key, const std::string& file);
// HKEY_USERS\<subKey> or HKEY_LOCAL_MACHINE\<subKey> served from file until unloaded (see
// registry_mounts.h); a name already in use gives ERROR_ALREADY_EXISTS.
LONG StoreLoadKey(HKEY root, const std::u16string& subKey, const std::string& file);
LONG StoreUnLoadKey(HKEY root, const std::u16string& subKey);
// Saves the hive that subKey roots to oldFile now; its contents become newFile's at the next
// start of the system (see registry_replace.h).
LONG StoreReplaceKey(HKEY base, const std::u16string& subKey, const std::string& newFile,
                     const std::string& oldFile);

// The store folder in use.
std::string StoreDirectory();

}  // namespace DE::detail::linux_impl
