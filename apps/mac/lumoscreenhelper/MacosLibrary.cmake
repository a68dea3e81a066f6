# The library as macOS loads it: everything in one file.
if("i386" IN_LIST CMAKE_OSX_ARCHITECTURES)
    return() # objects only: no linker that can be had links for this architecture any more
endif()
add_library(lumoscreenhelper SHARED
    $<TARGET_OBJECTS:lumoscreenhelper_engine>
    $<TARGET_OBJECTS:foundation>)
set_target_properties(lumoscreenhelper PROPERTIES
    PREFIX ""
    LINKER_LANGUAGE CXX
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}
    INSTALL_NAME_DIR /Library/lumo
    BUILD_WITH_INSTALL_NAME_DIR ON
    LINK_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/exports.list)
target_link_libraries(lumoscreenhelper PRIVATE lumo::platform_interfaces)
target_link_options(lumoscreenhelper PRIVATE
    LINKER:-exported_symbols_list,${CMAKE_CURRENT_SOURCE_DIR}/exports.list)
