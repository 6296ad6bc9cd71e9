# Sets TOVAN_RUNTIME_LIBRARIES to the files of the toolkit's and the compiler's libraries that the program
# needs beside it on Windows, and TOVAN_RUNTIME_FOLDERS to where they are here. On Windows itself a kit's
# windeployqt knows them.
set(TOVAN_RUNTIME_LIBRARIES)
foreach(library Core Gui Widgets)
    get_target_property(file Qt6::${library} LOCATION)
    list(APPEND TOVAN_RUNTIME_LIBRARIES ${file})
endforeach()
foreach(library libgcc_s_seh-1 libstdc++-6 libwinpthread-1)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${library}.dll
        OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE)
    file(REAL_PATH ${file} file)
    list(APPEND TOVAN_RUNTIME_LIBRARIES ${file})
endforeach()

set(TOVAN_RUNTIME_FOLDERS)
foreach(file IN LISTS TOVAN_RUNTIME_LIBRARIES)
    cmake_path(GET file PARENT_PATH folder)
    list(APPEND TOVAN_RUNTIME_FOLDERS ${folder})
endforeach()
list(REMOVE_DUPLICATES TOVAN_RUNTIME_FOLDERS)
