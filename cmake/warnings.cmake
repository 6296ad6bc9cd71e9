# What every target of ours is compiled with, whichever compiler it is.
option(TOVAN_WARNINGS_AS_ERRORS "Treat compiler warnings as errors" OFF)

add_library(tovan_options INTERFACE)
if(MSVC)
    # Sources are UTF-8; the rest makes the compiler keep to the standard.
    target_compile_options(tovan_options INTERFACE
        /W4 /utf-8 /permissive- /Zc:__cplusplus
        $<$<BOOL:${TOVAN_WARNINGS_AS_ERRORS}>:/WX>)
else()
    target_compile_options(tovan_options INTERFACE
        $<$<COMPILE_LANGUAGE:CXX>:-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wold-style-cast
        -Wnon-virtual-dtor $<$<BOOL:${TOVAN_WARNINGS_AS_ERRORS}>:-Werror>>)
endif()
