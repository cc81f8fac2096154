// RegReplaceKey on Linux: a hive's contents give way to another hive file's at the next start of
// the system, as on Windows. The call saves what the hive holds to the old file at once and
// leaves a request beside the hive file ("<hive>.replace": the new file's absolute path and the
// boot it was made in, from <system root>/proc/sys/kernel/random/boot_id). The first open of the
// hive in a later boot carries the request out: the hive then holds the new file's keys and
// values, and the request is removed. Writes made between the call and the restart are dropped,
// as Windows drops them. Linux-only code.
#pragma once

#include <memory>
#include <string>

#include "UtilPlatform.h"
#include "platform/linux/registry_hive.h"

namespace DE::detail::linux_impl {

// Checks that newFile is a hive, saves hive to oldFile (ERROR_ALREADY_EXISTS when it exists) and
// records the request; a second request before the restart takes the place of the first.
LONG ScheduleHiveReplace(Hive& hive, const std::string& newFile, const std::string& oldFile);

// Carries out the request waiting beside hiveFile when the system has started since it was made.
// Nothing happens when there is none; a request whose new file is gone or damaged is dropped,
// with an error in the log, and the hive stays as it is.
void ApplyPendingHiveReplace(const std::string& hiveFile);

}  // namespace DE::detail::linux_impl
