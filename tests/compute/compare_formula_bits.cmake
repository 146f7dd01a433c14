# Runs every program of the list PROGRAMS, and with EMULATOR each of them as each of PROCESSORS, and
# fails unless all print the number below. No compiler, library or processor has a say in it.
set(EXPECTED 6f8a1fce074e73dd)

function(compare)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE bits RESULT_VARIABLE status ERROR_VARIABLE errors
    OUTPUT_STRIP_TRAILING_WHITESPACE)
  message(STATUS "${bits} ${ARGN}")
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${ARGN} failed: ${status} ${errors}")
  elseif(NOT bits STREQUAL EXPECTED)
    message(FATAL_ERROR "${ARGN} counts differently: ${bits}, not ${EXPECTED}")
  endif()
endfunction()

foreach(program IN LISTS PROGRAMS)
  if(NOT EMULATOR)
    compare(${program})
  endif()
  foreach(processor IN LISTS PROCESSORS)
    compare(${EMULATOR} -cpu ${processor} ${program})
  endforeach()
endforeach()
