# Local time depends on the zone. One run in a zone with daylight saving time on which glibc and
# the Windows run-time agree: the run-time parses TZ itself ("EST5EDT": EST, 5 hours west, with
# daylight time by US rules), and Wine derives the system zone from the same variable. One run in
# UTC.
util_add_gtest(time time_test ENV TZ=EST5EDT)
util_add_gtest(time_utc time_test ENV TZ=UTC)
