# Runs tarn-calc as a user would and compares what it printed with the
# expected text: standard output, then standard error, then "[exit N]" when
# the exit status is not 0.
#   cmake -DPROGRAM=<tarn-calc> -DEXPECTED=<file> [-DSCRIPT=<file>] [-DEXPRESSION=<text>]
#         [-DARGS=<a;b>] [-DINPUT=<file>] -P run_script.cmake
# EXPRESSION goes after -e as one argument (without semicolons).
set(command ${PROGRAM})
if(DEFINED ARGS)
  list(APPEND command ${ARGS})
endif()
if(DEFINED EXPRESSION)
  list(APPEND command -e "${EXPRESSION}")
endif()
if(DEFINED SCRIPT)
  list(APPEND command ${SCRIPT})
endif()
if(DEFINED INPUT)
  execute_process(COMMAND ${command} INPUT_FILE ${INPUT}
                  OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE rc)
else()
  execute_process(COMMAND ${command} OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE rc)
endif()
set(actual "${out}${err}")
if(NOT rc EQUAL 0)
  string(APPEND actual "[exit ${rc}]\n")
endif()
file(READ ${EXPECTED} expected)
if(NOT actual STREQUAL expected)
  message(FATAL_ERROR "tarn-calc printed:\n${actual}\nbut this was expected:\n${expected}")
endif()
