# What is handed out beside the program, where it is built on Debian: the libraries and plug-ins of others
# that it needs, their licences and what users are told.
include(runtime.cmake)
install(FILES ${TOVAN_RUNTIME_LIBRARIES} DESTINATION .)
set(prefix ${QT6_INSTALL_PREFIX})
foreach(plugin
        platforms/qwindows styles/qwindowsvistastyle imageformats/qsvg iconengines/qsvgicon)
    cmake_path(GET plugin PARENT_PATH folder)
    install(FILES ${prefix}/${QT6_INSTALL_PLUGINS}/${plugin}.dll DESTINATION ${folder})
endforeach()

# tovan_source_of(VARIABLE PACKAGE): the source package that a package of this machine is built from, with
# its version.
function(tovan_source_of variable package)
    execute_process(
        COMMAND dpkg-query --show "--showformat=\${source:Package} \${source:Version}" ${package}
        OUTPUT_VARIABLE source COMMAND_ERROR_IS_FATAL ANY)
    set(${variable} ${source} PARENT_SCOPE)
endfunction()
tovan_source_of(qtSource qt6-base-dev)
tovan_source_of(gccSource gcc-mingw-w64-x86-64-posix-runtime)
tovan_source_of(mingwSource mingw-w64-x86-64-dev)
set(svgSource "qtsvg-opensource-src")
if(EXISTS ${prefix}/tovan-svg-source)
    file(STRINGS ${prefix}/tovan-svg-source svgSource)
endif()

set(licences ${CMAKE_CURRENT_BINARY_DIR}/licences)
foreach(licence
        LGPL-3=/usr/share/common-licenses/LGPL-3
        GPL-3=/usr/share/common-licenses/GPL-3
        qt6-base=/usr/share/doc/qt6-base-dev/copyright
        qtsvg=${prefix}/tovan-svg-copyright
        gcc=/usr/share/doc/gcc-mingw-w64-x86-64-posix-runtime/copyright
        mingw-w64=/usr/share/doc/mingw-w64-x86-64-dev/copyright
        tovan=${PROJECT_SOURCE_DIR}/LICENSE)
    string(REGEX MATCH "^([^=]*)=(.*)$" licence ${licence})
    if(EXISTS ${CMAKE_MATCH_2})
        configure_file(${CMAKE_MATCH_2} ${licences}/${CMAKE_MATCH_1}.txt @ONLY NEWLINE_STYLE CRLF)
    endif()
endforeach()
configure_file(NOTICE.txt.in ${licences}/NOTICE.txt @ONLY NEWLINE_STYLE CRLF)
install(DIRECTORY ${licences} DESTINATION .)
configure_file(README.txt.in ${CMAKE_CURRENT_BINARY_DIR}/README.txt @ONLY NEWLINE_STYLE CRLF)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/README.txt DESTINATION .)
