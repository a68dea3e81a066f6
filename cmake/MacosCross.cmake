# Builds for macOS on Linux: Debian's clang and lld, and the folder that scripts/macos-sdk puts
# together in the place of Apple's SDK. On a Mac this file is not used.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_VERSION 20) # the kernel of macOS 11
set(CMAKE_SYSTEM_PROCESSOR x86_64)

get_filename_component(lumo_root ${CMAKE_CURRENT_LIST_DIR} DIRECTORY)
set(lumo_tools ${lumo_root}/build/macos-sdk/tools)
set(CMAKE_OSX_SYSROOT ${lumo_root}/build/macos-sdk CACHE PATH "What stands for Apple's SDK")

set(CMAKE_C_COMPILER clang-19)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_OBJCXX_COMPILER /usr/bin/clang++-19) # CMake takes only a whole path for this one
set(CMAKE_EXE_LINKER_FLAGS_INIT "-fuse-ld=lld")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-fuse-ld=lld")
foreach(language C CXX OBJCXX)
    set(CMAKE_${language}_COMPILER_TARGET ${LUMO_MACOS_TARGET})
    # The driver looks there for the linker of each architecture and for lipo, which joins them.
    set(CMAKE_${language}_FLAGS_INIT "-B${lumo_tools} -mlinker-version=711")
endforeach()
set(CMAKE_AR llvm-ar-19 CACHE STRING "")
set(CMAKE_RANLIB llvm-ranlib-19 CACHE STRING "")
set(CMAKE_NM llvm-nm-19 CACHE STRING "")
set(CMAKE_INSTALL_NAME_TOOL llvm-install-name-tool-19 CACHE STRING "")
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES LUMO_MACOS_TARGET)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
