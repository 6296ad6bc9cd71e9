# What makes a mistake in the program harder to use against its user, for those who build it
# themselves. A distribution has flags of its own for the same and turns these off.
option(TOVAN_HARDENING "Compile and link with the protections that the compiler has" ON)

include(CheckCXXCompilerFlag)
include(CheckPIESupported)
check_pie_supported()
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

if(NOT TOVAN_HARDENING)
    return()
endif()
if(MSVC)
    target_compile_options(tovan_options INTERFACE /guard:cf)
    target_link_options(tovan_options INTERFACE /guard:cf /HIGHENTROPYVA /DYNAMICBASE)
    return()
endif()

# The linker is told as well: on Windows what the protector calls is in a library of the compiler's.
target_compile_options(tovan_options INTERFACE -fstack-protector-strong)
target_link_options(tovan_options INTERFACE -fstack-protector-strong)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|i[3-6]86)$")
    target_compile_options(tovan_options INTERFACE -fcf-protection)
endif()
if(WIN32)
    target_link_options(tovan_options INTERFACE -Wl,--high-entropy-va,--dynamicbase,--nxcompat)
    # What the checks call is in no library of Windows; this one needs no DLL of its own.
    target_link_libraries(tovan_options INTERFACE -l:libssp.a)
    # clang has control-flow guard for MinGW too, GCC has not.
    set(CMAKE_REQUIRED_LINK_OPTIONS -mguard=cf)
    check_cxx_compiler_flag(-mguard=cf TOVAN_HAS_CONTROL_FLOW_GUARD)
    unset(CMAKE_REQUIRED_LINK_OPTIONS)
    if(TOVAN_HAS_CONTROL_FLOW_GUARD)
        target_compile_options(tovan_options INTERFACE -mguard=cf)
        target_link_options(tovan_options INTERFACE -mguard=cf)
    endif()
else()
    target_compile_options(tovan_options INTERFACE -fstack-clash-protection)
    target_link_options(tovan_options INTERFACE -Wl,-z,relro,-z,now)
endif()
# The checks of the C library need an optimising compiler; the sanitizers have their own.
if(NOT TOVAN_SANITIZE)
    target_compile_options(tovan_options INTERFACE
        $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
endif()
