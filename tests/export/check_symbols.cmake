# Compares the functions that LIBRARY exports with the names in LIST, one a line, sorted.
execute_process(COMMAND ${NM} -D --defined-only ${LIBRARY}
  OUTPUT_VARIABLE table COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" lines "${table}")
set(exported "")
foreach(line IN LISTS lines)
  string(REGEX REPLACE ".* " "" name "${line}")
  list(APPEND exported ${name})
endforeach()
list(SORT exported)
file(STRINGS ${LIST} wanted)
if(NOT exported STREQUAL wanted)
  message(FATAL_ERROR "${LIBRARY} exports '${exported}', and should export '${wanted}'")
endif()
