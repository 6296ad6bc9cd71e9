# Tests on this machine what is for Windows: two projects of their own, built by a cross compiler as part of
# the whole build, whose tests join this build's tests and run in Wine.
include(ExternalProject)

tovan_needs(hasAll "the Windows backend"
    x86_64-w64-mingw32-g++-posix:g++-mingw-w64-x86-64
    wine:wine
    /usr/lib/wine/wine64:wine64
    /usr/src/googletest/googletest/CMakeLists.txt:libgtest-dev)
if(NOT hasAll)
    return()
endif()

# tovan_join_tests(FOLDER): a test run without a build must not pass for want of the tests there.
function(tovan_join_tests folder)
    cmake_path(GET folder FILENAME name)
    file(WRITE ${PROJECT_BINARY_DIR}/${name}-tests.cmake "
if(EXISTS [[${folder}/CTestTestfile.cmake]])
    subdirs([[${folder}]])
else()
    add_test(${name}_is_not_built false)
endif()
")
    set_property(DIRECTORY APPEND PROPERTY
        TEST_INCLUDE_FILES ${PROJECT_BINARY_DIR}/${name}-tests.cmake)
endfunction()

# The backend, which needs nothing but Windows.
set(backend ${PROJECT_BINARY_DIR}/windows_backend)
ExternalProject_Add(windows_backend_tests
    SOURCE_DIR ${PROJECT_SOURCE_DIR}/tests/sampling/windows
    BINARY_DIR ${backend}
    PREFIX ${backend}/external
    CMAKE_ARGS
        -DCMAKE_TOOLCHAIN_FILE=${PROJECT_SOURCE_DIR}/cmake/mingw-w64.cmake
        -DCMAKE_BUILD_TYPE=RelWithDebInfo
        "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O1 -g1 -DNDEBUG"
        -DTOVAN_GOOGLETEST_SOURCES=/usr/src/googletest
        -DTOVAN_VERSION=${PROJECT_VERSION}
        -DTOVAN_WARNINGS_AS_ERRORS=ON
    BUILD_ALWAYS ON
    INSTALL_COMMAND ""
)
tovan_join_tests(${backend})

# The program, which needs a Qt for Windows. It is the same in every build, so the optimised one tests it.
if(CMAKE_BUILD_TYPE STREQUAL Debug)
    return()
endif()
set(makeQt packaging/windows/qt/make.sh)
set(qt "$ENV{TOVAN_WINDOWS_QT}")
if(NOT IS_DIRECTORY "${qt}")
    execute_process(COMMAND ${makeQt} --kept WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
        OUTPUT_VARIABLE qt OUTPUT_STRIP_TRAILING_WHITESPACE)
endif()
if(NOT EXISTS "${qt}/lib/cmake/Qt6/qt.toolchain.cmake")
    message(NOTICE "Not tested: the program on Windows (no Qt for it: ${makeQt} makes one)")
    return()
endif()
set(program ${PROJECT_BINARY_DIR}/windows_program)
ExternalProject_Add(windows_program_tests
    SOURCE_DIR ${PROJECT_SOURCE_DIR}
    BINARY_DIR ${program}
    PREFIX ${program}/external
    CONFIGURE_COMMAND ${CMAKE_COMMAND} -E env TOVAN_WINDOWS_QT=${qt}
        ${CMAKE_COMMAND} -S <SOURCE_DIR> --preset windows -B <BINARY_DIR>
        -DTOVAN_WARNINGS_AS_ERRORS=ON
    BUILD_COMMAND ${CMAKE_COMMAND} --build <BINARY_DIR>
    BUILD_ALWAYS ON
    INSTALL_COMMAND ""
)
tovan_join_tests(${program})
