# Tests the Windows backend on this machine: a project of its own (tests/sampling/windows), built by
# a cross compiler as part of the whole build, whose tests join this build's tests and run in Wine.
include(ExternalProject)

set(missing "")
find_program(TOVAN_MINGW_COMPILER x86_64-w64-mingw32-g++-posix)
find_program(TOVAN_WINE NAMES wine wine64 wine-stable)
find_path(TOVAN_GOOGLETEST_SOURCES googletest/CMakeLists.txt PATHS /usr/src/googletest NO_DEFAULT_PATH)
foreach(need IN ITEMS
        "TOVAN_MINGW_COMPILER:g++-mingw-w64-x86-64"
        "TOVAN_WINE:wine wine64"
        "TOVAN_GOOGLETEST_SOURCES:libgtest-dev")
    string(REPLACE ":" ";" need "${need}")
    list(GET need 0 variable)
    list(GET need 1 packages)
    if(NOT ${variable})
        string(APPEND missing " ${packages}")
    endif()
endforeach()
if(missing)
    message(WARNING "The Windows backend is NOT built and NOT tested here. Missing packages:${missing}")
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
        -DTOVAN_GOOGLETEST_SOURCES=${TOVAN_GOOGLETEST_SOURCES}
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
