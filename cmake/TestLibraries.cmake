# GoogleTest and RapidCheck, where this machine has them. Without them BUILD_TESTING is off and only the product is built.
# In 32 bits GoogleTest is built from the sources that Debian packages.
if(NOT PICTUREZVK_64BIT)
  set(googletest_sources /usr/src/googletest)
  if(EXISTS ${googletest_sources}/CMakeLists.txt)
    add_subdirectory(${googletest_sources} googletest EXCLUDE_FROM_ALL)
    target_compile_options(gtest PRIVATE -w)
    # Its warnings are not ours to mend.
    set_target_properties(gtest gtest_main gmock gmock_main PROPERTIES COMPILE_WARNING_AS_ERROR OFF)
  endif()
else()
  find_package(GTest QUIET)
  find_package(rapidcheck QUIET)
endif()

if(NOT TARGET GTest::gtest_main OR (PICTUREZVK_64BIT AND NOT TARGET rapidcheck_gtest))
  message(STATUS "The tests are left out: GoogleTest or RapidCheck is not installed")
  set(BUILD_TESTING OFF)
endif()
