# The text suite runs once per ANSI code page: a single-byte page (1252) and a double-byte page
# (936). The Linux build takes the page from UTIL_ANSI_CODEPAGE; Wine derives it from the locale.
if(CMAKE_CROSSCOMPILING)
  util_add_gtest(strings_cp1252 strings_test ENV LANG=en_US.UTF-8 LC_ALL=en_US.UTF-8)
  util_add_gtest(strings_cp936 strings_test ENV LANG=zh_CN.UTF-8 LC_ALL=zh_CN.UTF-8)
else()
  util_add_gtest(strings_cp1252 strings_test ENV UTIL_ANSI_CODEPAGE=CP1252)
  util_add_gtest(strings_cp936 strings_test ENV UTIL_ANSI_CODEPAGE=CP936)
endif()
