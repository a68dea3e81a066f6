# The library exports its entry point and nothing else.
execute_process(COMMAND ${NM} -D --defined-only ${LIBRARY}
    OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
if(NOT symbols MATCHES "^[0-9a-f]+ T NewDisplayStream\n$")
    message(FATAL_ERROR "expected NewDisplayStream alone, found:\n${symbols}")
endif()
