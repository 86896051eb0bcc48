# cmake -DCHECKOUT=folder of Tolvik -DWORK=scratch folder -DCXX=compiler -DLEVMAR=LEVMAR_SOURCE_DIR
#       [-DWHOLE=ON] -P embed.cmake
#
# Builds Tolvik as a part of another project, by add_subdirectory and by FetchContent, and runs a program of that
# project. Both put Tolvik into one folder: the second compiles nothing again. Without WHOLE only the library of the
# state file is built, which takes seconds; with it a program calculates curves and fits.
include(${CMAKE_CURRENT_LIST_DIR}/../run.cmake)

file(REMOVE_RECURSE ${WORK})
foreach(how add_subdirectory FetchContent)
  run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${WORK} -G Ninja -DHOW=${how} -DTOLVIK_CHECKOUT=${CHECKOUT}
      -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DLEVMAR_SOURCE_DIR=${LEVMAR})
  file(STRINGS ${WORK}/compile_commands.json commands REGEX "\"command\":.*/src/optics/")
  list(FILTER commands EXCLUDE REGEX " -O3 -DNDEBUG ")
  if(commands)
    message(FATAL_ERROR "not optimised, where no build type is given: ${commands}")
  endif()
  run(${CMAKE_COMMAND} --build ${WORK} --target loader)
  run(${WORK}/loader ${CMAKE_CURRENT_LIST_DIR}/../consumer/substrate.state ${WORK}/written.state)
endforeach()

if(WHOLE)
  run(${CMAKE_COMMAND} --build ${WORK} --target consumer)
  run(${WORK}/consumer ${CMAKE_CURRENT_LIST_DIR}/../consumer/substrate.state)
endif()
