# lumo_objcxx_test(lib1/os/mac/NSUtil [SOURCES file...] [INCLUDES folder...])
# Builds tests/lib1/os/mac/NSUtilTest.mm and the given files against GNUstep, and adds it to ctest:
# what sends messages is compiled in such tests alone; what users run on this system needs no
# Foundation. Their compiler is g++, the one whose Objective-C++ catches C++ exceptions with this
# runtime; the sanitizers' run-time is clang's, so these files do without.

# CMake takes only a whole path for this language's compiler.
find_program(LUMO_OBJCXX_COMPILER NAMES ${CMAKE_OBJCXX_COMPILER} g++ REQUIRED)
set(CMAKE_OBJCXX_COMPILER ${LUMO_OBJCXX_COMPILER} CACHE FILEPATH "Objective-C++ compiler" FORCE)
enable_language(OBJCXX)

function(lumo_objcxx_test path)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;INCLUDES")
    string(REPLACE "/" "." name ${path})
    set(target ${name}.test)
    add_executable(${target} ${CMAKE_SOURCE_DIR}/tests/${path}Test.mm ${arg_SOURCES})
    get_target_property(options ${target} COMPILE_OPTIONS)
    list(FILTER options EXCLUDE REGEX "sanitize")
    set_target_properties(${target} PROPERTIES
        COMPILE_OPTIONS "${options}"
        OBJCXX_STANDARD 20
        OBJCXX_STANDARD_REQUIRED ON
        OBJCXX_EXTENSIONS OFF
        LINKER_LANGUAGE CXX
        RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Werror
        # Implementations of methods are of one type, whatever they take.
        "$<$<COMPILE_LANGUAGE:OBJCXX>:-fobjc-exceptions;-fconstant-string-class=NSConstantString;-Wno-cast-function-type>")
    target_compile_definitions(${target} PRIVATE GNUSTEP GNUSTEP_BASE_LIBRARY=1 GNU_RUNTIME=1
        _NATIVE_OBJC_EXCEPTIONS)
    target_include_directories(${target} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
    # The system's own Foundation comes before the declarations of macOS.
    target_include_directories(${target} SYSTEM PRIVATE /usr/include/GNUstep ${arg_INCLUDES})
    target_link_libraries(${target} PRIVATE lumo::foundation GTest::gmock_main gnustep-base objc)
    add_test(NAME ${path} COMMAND ${target} --gtest_brief=1)
    set_tests_properties(${path} PROPERTIES TIMEOUT 300)
endfunction()
