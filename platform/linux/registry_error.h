// Win32 codes of the registry store and the translation of SQLite result codes into them.
// The errno table stays in win32_error.h; SQLite's codes are mapped here, in one switch.
#pragma once

#include "UtilPlatform.h"
#include "platform/linux/win32_error.h"

namespace DE::detail::linux_impl {

constexpr LONG kRegErrorBadNetPath = 53;          // ERROR_BAD_NETPATH: remote registries are not served
constexpr LONG kRegErrorBadPathname = 161;        // ERROR_BAD_PATHNAME
constexpr LONG kRegErrorMoreData = 234;           // ERROR_MORE_DATA
constexpr LONG kRegErrorNoMoreItems = 259;        // ERROR_NO_MORE_ITEMS
constexpr LONG kRegErrorBadDb = 1009;             // ERROR_BADDB: not a hive of this store, or damaged
constexpr LONG kRegErrorBadKey = 1010;            // ERROR_BADKEY
constexpr LONG kRegErrorCantOpen = 1011;          // ERROR_CANTOPEN
constexpr LONG kRegErrorCantRead = 1012;          // ERROR_CANTREAD
constexpr LONG kRegErrorCantWrite = 1013;         // ERROR_CANTWRITE
constexpr LONG kRegErrorKeyDeleted = 1018;        // ERROR_KEY_DELETED: the handle's key is gone
constexpr LONG kRegErrorPrivilegeNotHeld = 1314;  // ERROR_PRIVILEGE_NOT_HELD

// The Win32 code for an SQLite result (primary or extended); 0 for SQLITE_OK/ROW/DONE.
// A busy store that stayed busy past the timeout gives ERROR_BUSY; a damaged or foreign file
// ERROR_BADDB; a full disk ERROR_DISK_FULL; a read-only file ERROR_ACCESS_DENIED.
LONG Win32ErrorFromSqlite(int result);

}  // namespace DE::detail::linux_impl
