# quobrix_add_folder(PATH): a folder joins the build when it has a list file of its own.
macro(quobrix_add_folder path)
    if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${path}/CMakeLists.txt)
        add_subdirectory(${path})
    endif()
endmacro()

# quobrix_library(FOLDER SOURCES … DEPENDS …): the library quobrix_FOLDER of src/FOLDER.
# Headers are included as "FOLDER/header.h". Each library exposes only its own folder, through a link in the build
# tree, so including a header of a folder that is not among the dependencies does not compile.
function(quobrix_library folder)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
    string(REPLACE "/" "_" target quobrix_${folder})
    add_library(${target} STATIC ${ARG_SOURCES})
    target_link_libraries(${target} PUBLIC quobrix_options ${ARG_DEPENDS})
    if(CMAKE_HOST_WIN32)
        target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    else()
        string(REGEX REPLACE "/.*" "" top ${folder})
        set(view ${PROJECT_BINARY_DIR}/include/${top})
        file(MAKE_DIRECTORY ${view})
        file(CREATE_LINK ${PROJECT_SOURCE_DIR}/src/${top} ${view}/${top} SYMBOLIC)
        target_include_directories(${target} PUBLIC ${view})
    endif()
endfunction()

# quobrix_test(NAME SOURCES … DEPENDS … [LABELS …]): a GoogleTest program. Tests see all of tests/ as "support/…".
function(quobrix_test name)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS;LABELS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE quobrix_options ${ARG_DEPENDS} GTest::gtest_main)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    add_test(NAME ${name} COMMAND ${name})
    set(environment QT_QPA_PLATFORM=offscreen)
    if(WIN32 AND NOT CMAKE_HOST_WIN32) # where Wine looks for libraries that a test is linked with
        set(environment WINEPATH=Z:${CMAKE_BINARY_DIR}/bin/simulator)
    endif()
    set_tests_properties(${name} PROPERTIES TIMEOUT 600 LABELS "${ARG_LABELS}" ENVIRONMENT "${environment}")
endfunction()

# quobrix_fuzz_target(NAME SOURCES … DEPENDS …): a libFuzzer program; its corpus lies in tests/fuzz/corpus/NAME without
# _fuzz. Builds that do not fuzz run it as a test over its corpus, so that it never falls behind the code it reads with.
function(quobrix_fuzz_target name)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE quobrix_options ${ARG_DEPENDS})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    if(NOT QUOBRIX_FUZZ)
        string(REGEX REPLACE "_fuzz$" "" subject ${name})
        target_sources(${name} PRIVATE replay_corpus.cpp)
        add_test(NAME ${name} COMMAND ${name} ${PROJECT_SOURCE_DIR}/tests/fuzz/corpus/${subject})
        return()
    endif()
    target_link_libraries(${name} PRIVATE -fsanitize=fuzzer)
    if(NOT TARGET fuzzers)
        add_custom_target(fuzzers)
    endif()
    add_dependencies(fuzzers ${name})
endfunction()
