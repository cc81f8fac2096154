# The Windows version rules are pure logic: compiled in, they run on every platform with made-up answers.
target_sources(osversion_test PRIVATE ${CMAKE_SOURCE_DIR}/foundation/os_version_rules.cpp)
target_include_directories(osversion_test PRIVATE ${CMAKE_SOURCE_DIR})
if(WIN32)
  # A manifest declaring Windows 10 support, as the suite's programs have, so the version queries
  # answer unshimmed; advapi32 to choose Wine's reported release, netapi32 for the workstation service.
  enable_language(RC)
  target_sources(osversion_test PRIVATE ${CMAKE_CURRENT_LIST_DIR}/osversion_test.rc)
  target_link_libraries(osversion_test PRIVATE advapi32 netapi32)
endif()
util_add_gtest(osversion osversion_test)
