# Builds for Windows on Linux, with Debian's mingw-w64: QUOBRIX_WINDOWS_CPU is x86_64 or i686. The programs need nothing
# but Windows itself; Wine runs those for x86_64.
set(QUOBRIX_WINDOWS_CPU x86_64 CACHE STRING "Processor of the Windows programs: x86_64 or i686")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QUOBRIX_WINDOWS_CPU)

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${QUOBRIX_WINDOWS_CPU})
set(mingw ${QUOBRIX_WINDOWS_CPU}-w64-mingw32)
set(CMAKE_C_COMPILER ${mingw}-gcc-posix)
set(CMAKE_CXX_COMPILER ${mingw}-g++-posix)
set(CMAKE_RC_COMPILER ${mingw}-windres)
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "-static -wrapper ${CMAKE_CURRENT_LIST_DIR}/../scripts/lld")
endforeach()

set(CMAKE_FIND_ROOT_PATH /usr/${mingw})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
foreach(kind LIBRARY INCLUDE PACKAGE)
    set(CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY)
endforeach()

# Wine's name for the root of this system, so that its absolute paths are such for Windows, too.
set(QUOBRIX_DRIVE Z:)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine)
