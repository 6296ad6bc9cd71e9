# tovan_windows_resources(TARGET [VERSION]): gives a program the icon, the version information and the
# manifest of Tovan Network Monitor. The version is the project's unless one is named.
set(TOVAN_WINDOWS_PACKAGING ${CMAKE_CURRENT_LIST_DIR})

function(tovan_windows_resources target)
    set(version ${PROJECT_VERSION})
    if(ARGC GREATER 1)
        set(version ${ARGV1})
    endif()
    if(NOT version MATCHES "^([0-9]+)\\.([0-9]+)\\.([0-9]+)$")
        message(FATAL_ERROR "A version has three numbers: \"${version}\"")
    endif()
    set(major ${CMAKE_MATCH_1})
    set(minor ${CMAKE_MATCH_2})
    set(patch ${CMAKE_MATCH_3})
    set(icon ${TOVAN_WINDOWS_PACKAGING}/tovan-network-monitor.ico)
    set(manifest ${CMAKE_CURRENT_BINARY_DIR}/${target}.manifest)
    set(script ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)

    configure_file(${TOVAN_WINDOWS_PACKAGING}/tovan-network-monitor.manifest ${manifest} @ONLY)
    configure_file(${TOVAN_WINDOWS_PACKAGING}/tovan-network-monitor.rc.in ${script} @ONLY)
    set_property(SOURCE ${script} APPEND PROPERTY OBJECT_DEPENDS "${icon};${manifest}")
    target_sources(${target} PRIVATE ${script})
    if(MSVC)
        # The manifest above is the whole one; the linker would add a second.
        target_link_options(${target} PRIVATE /MANIFEST:NO)
    endif()
endfunction()
