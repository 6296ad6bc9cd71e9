# How tests of Windows programs are run on this machine: by Wine, in a prefix of the build's own. Nothing of
# the desktop is looked for or written to: no display, no menus, no offers to fetch the .NET and HTML
# engines.
set(TOVAN_WINE_ENVIRONMENT
    WINEPREFIX=${PROJECT_BINARY_DIR}/wineprefix WINEARCH=win64 WINEDEBUG=-all DISPLAY= LC_ALL=C.UTF-8
    WINEDLLOVERRIDES=winemenubuilder.exe,mscoree,mshtml=)

# tovan_wine_prefix(NAME [LIBRARIES folder...] [VARIABLES name=value...]): the fixture NAME makes the prefix
# before the tests that require it, and ends what still runs in it after them. Its user gets these folders
# to find libraries in, and the variables: Wine hands on few of those that it is started with.
function(tovan_wine_prefix name)
    cmake_parse_arguments(ARG "" "" "LIBRARIES;VARIABLES" ${ARGN})
    find_program(TOVAN_WINESERVER NAMES wineserver wineserver-stable REQUIRED)
    set(registry "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\Environment]\n")
    foreach(variable IN LISTS ARG_VARIABLES)
        string(REGEX REPLACE "^([^=]*)=(.*)$" "\"\\1\"=\"\\2\"\n" line "${variable}")
        string(APPEND registry "${line}")
    endforeach()
    list(TRANSFORM ARG_LIBRARIES PREPEND Z:)
    string(APPEND registry "\"PATH\"=\"${ARG_LIBRARIES}\"\n")
    file(WRITE ${PROJECT_BINARY_DIR}/${name}.reg "${registry}")
    add_test(NAME ${name}_setup
        COMMAND ${TOVAN_WINE} regedit /S ${PROJECT_BINARY_DIR}/${name}.reg)
    set_tests_properties(${name}_setup PROPERTIES FIXTURES_SETUP ${name} TIMEOUT 180)
    add_test(NAME ${name}_cleanup COMMAND ${TOVAN_WINESERVER} --wait)
    set_tests_properties(${name}_cleanup PROPERTIES FIXTURES_CLEANUP ${name} TIMEOUT 60)
    set_tests_properties(${name}_setup ${name}_cleanup PROPERTIES
        LABELS windows ENVIRONMENT "${TOVAN_WINE_ENVIRONMENT}")
endfunction()
