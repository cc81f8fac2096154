# The Windows version rules are pure internal logic; the suite compiles them in to drive them with
# made-up system answers on every platform.
target_sources(osversion_test PRIVATE ${CMAKE_SOURCE_DIR}/foundation/os_version_rules.cpp)
target_include_directories(osversion_test PRIVATE ${CMAKE_SOURCE_DIR})
if(WIN32)
  # A manifest declaring Windows 10 support, as the suite's programs have, so the version
  # queries answer unshimmed; advapi32 for choosing Wine's reported release in the registry,
  # netapi32 for asking the workstation service directly.
  enable_language(RC)
  target_sources(osversion_test PRIVATE ${CMAKE_CURRENT_LIST_DIR}/osversion_test.rc)
  target_link_libraries(osversion_test PRIVATE advapi32 netapi32)
endif()
util_add_gtest(osversion osversion_test)
