// SQLite result codes as Win32 codes, for the registry store. Linux-only code.
#include "platform/linux/registry_error.h"

#include <sqlite3.h>

namespace DE::detail::linux_impl {

LONG Win32ErrorFromSqlite(int result) {
  switch (result & 0xFF) {
    case SQLITE_OK:
    case SQLITE_ROW:
    case SQLITE_DONE:
      return 0;
    case SQLITE_PERM:
    case SQLITE_READONLY:
    case SQLITE_AUTH:
      return static_cast<LONG>(kErrorAccessDenied);
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return static_cast<LONG>(kErrorBusy);
    case SQLITE_NOMEM:
      return static_cast<LONG>(kErrorNotEnoughMemory);
    case SQLITE_FULL:
      return static_cast<LONG>(kErrorDiskFull);
    case SQLITE_CANTOPEN:
      return kRegErrorCantOpen;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_FORMAT:
    case SQLITE_SCHEMA:
      return kRegErrorBadDb;
    case SQLITE_IOERR:
      return static_cast<LONG>(kErrorIoDevice);
    case SQLITE_TOOBIG:
      return static_cast<LONG>(kErrorInvalidParameter);
    case SQLITE_CONSTRAINT:
    case SQLITE_MISMATCH:
      return kRegErrorBadKey;
    default:
      return static_cast<LONG>(kErrorGenFailure);
  }
}

}  // namespace DE::detail::linux_impl
