# One interface target carries the language level, the warnings and the sanitizers for every target of the project.
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(CCACHE ccache)
if(CCACHE)
    set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

add_library(quobrix_options INTERFACE)
if(MSVC)
    target_compile_options(quobrix_options INTERFACE /W4 /WX /utf-8 /permissive-)
else()
    target_compile_options(quobrix_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion
        -Werror $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor> $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>
        $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>)
    # GCC 12 mistakes inlined copies and growth of std::string and std::vector for overlapping or overrunning ones.
    target_compile_options(quobrix_options INTERFACE
        "$<$<AND:$<COMPILE_LANGUAGE:CXX>,$<CXX_COMPILER_ID:GNU>>:-Wno-restrict;-Wno-array-bounds;-Wno-stringop-overflow;-Wno-stringop-overread>")
endif()
if(WIN32)
    # Windows 10 and later, its calls for UTF-16 texts, and no macros named min and max.
    target_compile_definitions(quobrix_options INTERFACE _WIN32_WINNT=0x0A00 NTDDI_VERSION=0x0A000006 UNICODE NOMINMAX
        WIN32_LEAN_AND_MEAN)
    if(MINGW) # more functions in a batch of files than an ordinary object file can list
        target_compile_options(quobrix_options INTERFACE -Wa,-mbig-obj)
        # With as little optimisation as these builds have, GCC takes what an optional never held for uninitialised.
        target_compile_options(quobrix_options INTERFACE -Wno-maybe-uninitialized)
    endif()
endif()
if(QUOBRIX_SANITIZE)
    # The instrumented code makes the compiler warn of what cannot happen; the release build judges warnings.
    target_compile_options(quobrix_options INTERFACE -Wno-error)
    target_compile_options(quobrix_options INTERFACE -fsanitize=${QUOBRIX_SANITIZE} -fno-omit-frame-pointer
        -fno-sanitize-recover=all)
    # It is the code under test whose undefined behaviour counts.
    target_compile_options(quobrix_options INTERFACE
        $<$<BOOL:$<TARGET_PROPERTY:QUOBRIX_TEST>>:-fno-sanitize=undefined>)
    target_link_options(quobrix_options INTERFACE -fsanitize=${QUOBRIX_SANITIZE})
endif()
if(QUOBRIX_FUZZ)
    target_compile_options(quobrix_options INTERFACE -fsanitize=fuzzer-no-link,address,undefined
        -fno-sanitize-recover=all)
    target_link_options(quobrix_options INTERFACE -fsanitize=address,undefined)
endif()
