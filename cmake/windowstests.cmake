# Tests the Windows backend on this machine: a project of its own (tests/sampling/windows), built by
# a cross compiler as part of the whole build, whose tests join this build's tests and run in Wine.
include(ExternalProject)

tovan_needs(hasAll "the Windows backend"
    x86_64-w64-mingw32-g++-posix:g++-mingw-w64-x86-64
    wine:wine
    /usr/lib/wine/wine64:wine64
    /usr/src/googletest/googletest/CMakeLists.txt:libgtest-dev)
if(NOT hasAll)
    return()
endif()

set(windowsTests ${PROJECT_BINARY_DIR}/windows)
ExternalProject_Add(windows_backend_tests
    SOURCE_DIR ${PROJECT_SOURCE_DIR}/tests/sampling/windows
    BINARY_DIR ${windowsTests}
    PREFIX ${windowsTests}/external
    CMAKE_ARGS
        -DCMAKE_TOOLCHAIN_FILE=${PROJECT_SOURCE_DIR}/cmake/mingw-w64.cmake
        -DCMAKE_BUILD_TYPE=RelWithDebInfo
        -DTOVAN_GOOGLETEST_SOURCES=/usr/src/googletest
        -DTOVAN_VERSION=${PROJECT_VERSION}
        -DTOVAN_WARNINGS_AS_ERRORS=ON
    BUILD_ALWAYS ON
    INSTALL_COMMAND ""
)

# A test run without a build must not pass for want of these tests.
file(WRITE ${windowsTests}-tests.cmake "
if(EXISTS [[${windowsTests}/CTestTestfile.cmake]])
    include([[${windowsTests}/CTestTestfile.cmake]])
else()
    add_test(windows_backend_is_not_built false)
endif()
")
set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${windowsTests}-tests.cmake)
