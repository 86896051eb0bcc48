# cmake -DBUILD=build folder -DSOURCE=example folder -DWORK=scratch folder -DCXX=compiler -DSTATE=state file -P fit_with_errors.cmake
#
# Builds the example of a fit with error bars against the installed package, and runs it on a simulated measurement. Its
# fit starts beside the truth; the roughness of the film, 4 Å, must come back within four errors.
include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/prefix)
run(${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK}/build -G Ninja -DCMAKE_PREFIX_PATH=${WORK}/prefix -DCMAKE_CXX_COMPILER=${CXX})
run(${CMAKE_COMMAND} --build ${WORK}/build)

execute_process(COMMAND ${WORK}/build/fit_with_errors ${STATE} OUTPUT_VARIABLE table COMMAND_ERROR_IS_FATAL ANY)
message("${table}")
if(NOT table MATCHES "layer 1 roughness +([0-9.]+) ± ([0-9.]+)\n")
  message(FATAL_ERROR "no roughness with an error in the table")
endif()
set(value ${CMAKE_MATCH_1})
set(error ${CMAKE_MATCH_2})
execute_process(COMMAND awk "BEGIN { d = ${value} - 4; if (d < 0) d = -d; exit !(d < 4 * ${error} && ${error} < 0.5) }"
                RESULT_VARIABLE result)
if(result)
  message(FATAL_ERROR "the roughness of the film is 4 Å, the fit says ${value} ± ${error}")
endif()

execute_process(COMMAND ${WORK}/build/fit_with_errors ${STATE}.missing RESULT_VARIABLE result ERROR_VARIABLE message)
if(NOT result EQUAL 1 OR NOT message MATCHES "cannot be read as a state file")
  message(FATAL_ERROR "a missing state gives ${result}: ${message}")
endif()
