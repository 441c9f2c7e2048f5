# quobrix_add_folder(PATH): a folder joins the build when it has a list file of its own.
macro(quobrix_add_folder path)
    if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${path}/CMakeLists.txt)
        add_subdirectory(${path})
    endif()
endmacro()

# quobrix_view(TARGET SCOPE NAME PATH): TARGET includes the headers of the folder PATH as "NAME/header.h", and sees no
# other folder beside it: the include directory is one of the build tree that holds a link to PATH and nothing else.
function(quobrix_view target scope name path)
    if(CMAKE_HOST_WIN32) # where links need a privilege
        cmake_path(GET path PARENT_PATH view)
    else()
        set(view ${PROJECT_BINARY_DIR}/include/${name})
        file(MAKE_DIRECTORY ${view})
        file(CREATE_LINK ${path} ${view}/${name} SYMBOLIC)
    endif()
    target_include_directories(${target} ${scope} ${view})
endfunction()

# quobrix_library(FOLDER SOURCES … DEPENDS …): the library quobrix_FOLDER of src/FOLDER. It sees its own headers and those
# of the libraries among its DEPENDS, whose own dependencies are linked but not seen: including a header of a folder that
# is not named does not compile. What the included headers include is named too.
function(quobrix_library folder)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
    string(REPLACE "/" "_" target quobrix_${folder})
    add_library(${target} STATIC ${ARG_SOURCES})
    target_link_libraries(${target} PUBLIC quobrix_options PRIVATE ${ARG_DEPENDS})
    quobrix_all_below(below ${ARG_DEPENDS})
    set_target_properties(${target} PROPERTIES QUOBRIX_BELOW "${below}")
    string(REGEX REPLACE "/.*" "" top ${folder})
    quobrix_view(${target} PUBLIC ${top} ${PROJECT_SOURCE_DIR}/src/${top})
endfunction()

# quobrix_all_below(OUT TARGET…): the targets and all that they are built on.
function(quobrix_all_below out)
    set(all ${ARGN})
    foreach(target ${ARGN})
        if(TARGET ${target})
            get_target_property(below ${target} QUOBRIX_BELOW)
            if(below)
                list(APPEND all ${below})
            endif()
        endif()
    endforeach()
    list(REMOVE_DUPLICATES all)
    set(${out} ${all} PARENT_SCOPE)
endfunction()

# quobrix_test_program(NAME SOURCES … DEPENDS …): a program of tests/ or bench/, which sees what the libraries it names are
# built on, too, and all of tests/ as "support/…".
function(quobrix_test_program name)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    quobrix_all_below(depends ${ARG_DEPENDS})
    target_link_libraries(${name} PRIVATE quobrix_options ${depends})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    # Compiling tests takes longer than running them.
    set_target_properties(${name} PROPERTIES QUOBRIX_TEST ON)
    if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT MSVC AND NOT name MATCHES "_bench$")
        target_compile_options(${name} PRIVATE -O1)
    endif()
endfunction()

# Adds the test NAME, which runs the program of that name with ARGN. Wine now and then ends a program that crashed with
# exit code 0.
function(quobrix_add_test name)
    add_test(NAME ${name} COMMAND ${name} ${ARGN})
    if(WIN32 AND NOT CMAKE_HOST_WIN32)
        set_tests_properties(${name} PROPERTIES FAIL_REGULAR_EXPRESSION "wine: Unhandled")
    endif()
endfunction()

# quobrix_test(NAME SOURCES … DEPENDS … [LABELS …]): a GoogleTest program. Those with the label "threads" start some: they
# are what the thread sanitizer is for.
function(quobrix_test name)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS;LABELS" ${ARGN})
    quobrix_test_program(${name} SOURCES ${ARG_SOURCES} DEPENDS ${ARG_DEPENDS} GTest::gtest_main)
    quobrix_add_test(${name})
    if("threads" IN_LIST ARG_LABELS)
        if(NOT TARGET threaded_tests)
            add_custom_target(threaded_tests)
        endif()
        add_dependencies(threaded_tests ${name})
    endif()
    set(environment QT_QPA_PLATFORM=offscreen)
    if(WIN32 AND NOT CMAKE_HOST_WIN32) # where Wine looks for libraries that a test is linked with
        set(environment WINEPATH=${QUOBRIX_DRIVE}${CMAKE_BINARY_DIR}/bin/simulator)
    endif()
    set_tests_properties(${name} PROPERTIES TIMEOUT 600 LABELS "${ARG_LABELS}" ENVIRONMENT "${environment}")
endfunction()

# quobrix_fuzz_target(NAME SOURCES … DEPENDS …): a libFuzzer program; its corpus lies in tests/fuzz/corpus/NAME without
# _fuzz. Builds that do not fuzz run it as a test over its corpus, so that it never falls behind the code it reads with.
function(quobrix_fuzz_target name)
    quobrix_test_program(${name} ${ARGN})
    if(NOT QUOBRIX_FUZZ)
        string(REGEX REPLACE "_fuzz$" "" subject ${name})
        target_sources(${name} PRIVATE replay_corpus.cpp)
        quobrix_add_test(${name} ${PROJECT_SOURCE_DIR}/tests/fuzz/corpus/${subject})
        return()
    endif()
    target_link_libraries(${name} PRIVATE -fsanitize=fuzzer)
    if(NOT TARGET fuzzers)
        add_custom_target(fuzzers)
    endif()
    add_dependencies(fuzzers ${name})
endfunction()
