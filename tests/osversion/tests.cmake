# The Windows version rules are pure internal logic; the suite compiles them in to drive them with
# made-up system answers on every platform.
target_sources(osversion_test PRIVATE ${CMAKE_SOURCE_DIR}/foundation/os_version_rules.cpp)
target_include_directories(osversion_test PRIVATE ${CMAKE_SOURCE_DIR})
util_add_gtest(osversion osversion_test)
