# Runs tarn-calc as a user would and compares what it printed with the
# expected text: standard output, then standard error, then "[exit N]" when
# the exit status is not 0.
#   cmake -DPROGRAM=<tarn-calc> -DEXPECTED=<file> [-DSCRIPT=<file>] [-DEXPRESSION=<text>]
#         [-DARGS=<a;b>] [-DSCRIPT_ARGS=<a;b>] [-DINPUT=<file>] -P run_script.cmake
# EXPRESSION goes after -e as one argument (without semicolons).
set(command ${PROGRAM})
if(DEFINED ARGS)
  list(APPEND command ${ARGS})
endif()
if(DEFINED EXPRESSION)
  list(APPEND command -e "${EXPRESSION}")
endif()
# A script runs in its own folder, named without a path, so that error
# places name the file the same on every machine.
set(folder ${CMAKE_CURRENT_BINARY_DIR})
if(DEFINED SCRIPT)
  get_filename_component(folder ${SCRIPT} DIRECTORY)
  get_filename_component(name ${SCRIPT} NAME)
  list(APPEND command ${name})
endif()
if(DEFINED SCRIPT_ARGS)
  list(APPEND command ${SCRIPT_ARGS})
endif()
if(DEFINED INPUT)
  execute_process(COMMAND ${command} INPUT_FILE ${INPUT} WORKING_DIRECTORY ${folder}
                  OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE rc)
else()
  execute_process(COMMAND ${command} WORKING_DIRECTORY ${folder}
                  OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE rc)
endif()
set(actual "${out}${err}")
if(NOT rc EQUAL 0)
  string(APPEND actual "[exit ${rc}]\n")
endif()
file(READ ${EXPECTED} expected)
if(NOT actual STREQUAL expected)
  message(FATAL_ERROR "tarn-calc printed:\n${actual}\nbut this was expected:\n${expected}")
endif()
