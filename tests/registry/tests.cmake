# The registry suite, and (Linux build) the .reg interchange with the Windows build under Wine.
util_add_gtest(registry registry_test)
# The class cases again on a double-byte ANSI page, where key info reports doubled name lengths.
if(CMAKE_CROSSCOMPILING)
  util_add_gtest(registry_cp936 registry_test ENV GTEST_FILTER=RegistryTest.* LANG=zh_CN.UTF-8 LC_ALL=zh_CN.UTF-8)
else()
  util_add_gtest(registry_cp936 registry_test ENV GTEST_FILTER=RegistryTest.* UTIL_ANSI_CODEPAGE=CP936)
endif()
if(NOT WIN32)
  # The Linux fault tests reach the substitutes' system-call table and SQLite's own.
  find_package(SQLite3 REQUIRED)
  target_include_directories(registry_test PRIVATE ${CMAKE_SOURCE_DIR})
  target_link_libraries(registry_test PRIVATE SQLite::SQLite3)
endif()
if(NOT CMAKE_CROSSCOMPILING AND TARGET utl)
  set(UTIL_WINDOWS_BUILD_DIR "" CACHE PATH "A Windows build folder whose utl.exe the cross-build checks compare against")
  find_package(Python3 COMPONENTS Interpreter REQUIRED)
  add_test(NAME registry_interchange
           COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/reg_interchange_test.py
                   --utl $<TARGET_FILE:utl> --windows-build "${UTIL_WINDOWS_BUILD_DIR}")
  set_tests_properties(registry_interchange PROPERTIES TIMEOUT 600 SKIP_REGULAR_EXPRESSION "^SKIP:")
endif()
