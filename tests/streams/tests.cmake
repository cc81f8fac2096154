# The Linux fault tests reach the substitutes' system-call table (platform/linux/system_calls.h).
target_include_directories(streams_test PRIVATE ${CMAKE_SOURCE_DIR})
util_add_gtest(streams streams_test)
