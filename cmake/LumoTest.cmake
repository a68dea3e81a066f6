# lumo_test(lib1/plat/DString [LIBS target...] [SOURCES file...] [NEW file] [XSERVER] [LABELS label...])
# Builds tests/lib1/plat/DStringTest.cpp into one program and adds it to ctest under the same name.
# NEW: a source file whose operator new replaces the standard one. The thread sanitizer's run-time
# has one too and does not let go of it, so there such a test is left out.
# XSERVER: the test starts X servers of its own, so fewer such tests run side by side.

if(LUMO_M32)
    # Debian has no 32-bit GoogleTest library; its sources are a package.
    set(INSTALL_GTEST OFF)
    set(BUILD_GMOCK ON)
    add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
else()
    find_package(GTest REQUIRED)
endif()

# What is reported although it is meant, each with its reason; names are found by the symbolizer.
find_program(LUMO_SYMBOLIZER NAMES llvm-symbolizer-19 llvm-symbolizer)
set(symbolizer "external_symbolizer_path=${LUMO_SYMBOLIZER}")
set(lumo_sanitizer_options
    "ASAN_OPTIONS=${symbolizer}"
    "LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/lsan.supp:print_suppressions=0"
    "TSAN_OPTIONS=${symbolizer}:suppressions=${CMAKE_SOURCE_DIR}/tests/tsan.supp")

function(lumo_test path)
    cmake_parse_arguments(PARSE_ARGV 1 arg "XSERVER" "NEW" "LIBS;LABELS;SOURCES")
    if(arg_NEW AND LUMO_SANITIZE MATCHES "thread")
        return()
    endif()
    string(REPLACE "/" "." name ${path})
    set(target ${name}.test)
    add_executable(${target} ${CMAKE_SOURCE_DIR}/tests/${path}Test.cpp ${arg_SOURCES} ${arg_NEW})
    set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    target_include_directories(${target} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
    target_link_libraries(${target} PRIVATE lumo::foundation ${arg_LIBS} GTest::gmock_main)
    lumo_warnings(${target})
    add_test(NAME ${path} COMMAND ${target} --gtest_brief=1)
    set_tests_properties(${path} PROPERTIES TIMEOUT 300 LABELS "${arg_LABELS}")
    set_tests_properties(${path} PROPERTIES ENVIRONMENT "${lumo_sanitizer_options}")
    if(arg_XSERVER)
        set_tests_properties(${path} PROPERTIES PROCESSORS 2 LABELS "xserver;${arg_LABELS}")
    endif()
endfunction()
