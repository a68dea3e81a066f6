# How every target of this project is compiled.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Programs and libraries stand side by side, as they do when installed: lumowatch finds the library
# beside itself, and each finds the libraries that it needs through $ORIGIN.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN")

# No path of the machine that builds goes into what is built: assertion texts name the source tree.
add_compile_options(-ffile-prefix-map=${CMAKE_SOURCE_DIR}/=)

# Debian's valgrind cannot read what clang 19 writes by default.
add_compile_options($<$<COMPILE_LANG_AND_ID:CXX,Clang>:-fdebug-default-version=4>)

if(LUMO_SANITIZE)
    add_compile_options(-fsanitize=${LUMO_SANITIZE} -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${LUMO_SANITIZE})
    if(LUMO_SANITIZE MATCHES "undefined")
        add_compile_options(-fno-sanitize-recover=undefined)
    endif()
endif()
if(LUMO_FUZZ) # the code reports which way it takes; only the fuzzers have libFuzzer's main
    add_compile_options(-fsanitize=fuzzer-no-link)
    add_link_options(-fsanitize=fuzzer-no-link)
endif()
if(LUMO_M32)
    add_compile_options(-m32)
    add_link_options(-m32)
endif()

# lumo_warnings(target): the warnings that this project is clean under; each is an error.
function(lumo_warnings target)
    target_compile_options(${target} PRIVATE
        $<$<COMPILE_LANGUAGE:CXX>:-Wall -Wextra -Wpedantic -Wold-style-cast
        -Wnon-virtual-dtor -Woverloaded-virtual -Wimplicit-fallthrough -Werror>
        # g++ also counts a constructor's parameter that is named after the member it sets, and
        # notes that vectors are passed differently where there is no SSE.
        $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-Wshadow>
        $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wshadow=local -Wno-psabi>)
endfunction()
