# Compares what the library exports with what the headers declare: cmake -D NM=... -D LIBRARY=...
# -D "HEADERS=folder;folder" -P exports.cmake

set(declared "")
foreach(folder IN LISTS HEADERS)
    file(GLOB_RECURSE headers ${folder}/*.h)
    foreach(header IN LISTS headers)
        file(READ ${header} text)
        # A list in CMake ends at a semicolon, and so does a declaration.
        string(REGEX REPLACE "//[^\n]*" "" text "${text}")
        string(REPLACE ";" "\n<end>" text "${text}")
        string(REGEX MATCHALL "\n(CF_EXPORT|CG_EXTERN|DISPATCH_EXPORT)[^<]*" declarations "${text}")
        foreach(declaration IN LISTS declarations)
            if(declaration MATCHES "([A-Za-z_0-9]+)\\(") # a function
                list(APPEND declared ${CMAKE_MATCH_1})
            elseif(declaration MATCHES "([A-Za-z_0-9]+)[ \n]*$") # a constant
                list(APPEND declared ${CMAKE_MATCH_1})
            endif()
        endforeach()
    endforeach()
endforeach()
list(SORT declared)

execute_process(COMMAND ${NM} -D --defined-only --format=posix ${LIBRARY}
    OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" lines "${symbols}")
set(exported "")
foreach(line IN LISTS lines)
    string(REGEX MATCH "^[^ ]+" name "${line}")
    list(APPEND exported ${name})
endforeach()
list(SORT exported)

list(LENGTH declared count)
if(count LESS 60)
    message(FATAL_ERROR "Only ${count} declarations found: is the pattern still right?")
endif()
if(NOT declared STREQUAL exported)
    set(missing ${declared})
    list(REMOVE_ITEM missing ${exported})
    list(REMOVE_ITEM exported ${declared})
    message(FATAL_ERROR "Declared but not exported: ${missing}\nExported but not declared: ${exported}")
endif()
message(STATUS "${count} declared names, all exported, no other")
