# Fails where an object compiled for an instruction set defines a function that other files could
# link: the linker keeps one copy for all, and on an older CPU that copy would crash.
# NM: the program; OBJECTS: the objects, with | between them.
string(REPLACE "|" ";" objects "${OBJECTS}")
set(seen 0)
foreach(object ${objects})
  if(NOT object MATCHES "isa_[a-z0-9_]+\\.cpp")
    continue()
  endif()
  math(EXPR seen "${seen} + 1")
  execute_process(COMMAND ${NM} -C --defined-only --extern-only ${object}
    OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX REPLACE "\n$" "" symbols "${symbols}")
  string(REPLACE "\n" ";" symbols "${symbols}")
  foreach(symbol ${symbols})
    if(NOT symbol MATCHES " T MCSVM_700::(packed|certified|explain)::[A-Za-z0-9]+Operations\\(\\)$" AND
       NOT symbol MATCHES "__odr_asan|DW.ref")
      message(SEND_ERROR "${object} shares ${symbol}")
    endif()
  endforeach()
endforeach()
if(NOT seen EQUAL 8)
  message(FATAL_ERROR "expected three objects of packed forms, two of certified ones and three of "
    "explanations, saw ${seen}")
endif()
