# cmake -DBUILD=build folder -DSOURCE=consumer folder -DWORK=scratch folder -DCXX=compiler -DPYTHON=bool
#       -P install_and_use.cmake
#
# Installs into a scratch prefix, moves that to another place (an installed tree must not depend on its first place),
# then builds and runs the consumer there through the CMake package, and once more through pkg-config.
include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/first)
file(RENAME ${WORK}/first ${WORK}/prefix)
set(prefix ${WORK}/prefix)

file(GLOB_RECURSE manual ${prefix}/*/Tolvik.1)
if(NOT manual OR NOT EXISTS ${prefix}/bin/Tolvik OR NOT EXISTS ${prefix}/include/tolvik/tolvik.h)
  message(FATAL_ERROR "the installed tree lacks the program, a header or the man page")
endif()

if(PYTHON)
  run(${prefix}/bin/tolvik-new --version)
endif()

run(${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK}/build -G Ninja -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX})
run(${CMAKE_COMMAND} --build ${WORK}/build)
run(${WORK}/build/consumer ${SOURCE}/substrate.state)

file(GLOB_RECURSE pc ${prefix}/*/tolvik.pc)
get_filename_component(pc_folder ${pc} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pc_folder})
execute_process(COMMAND pkg-config --cflags --libs tolvik OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(${CXX} -std=c++20 ${SOURCE}/main.cpp -o ${WORK}/consumer ${flags})
file(GLOB_RECURSE library ${prefix}/*/libtolvik.so)
get_filename_component(library_folder ${library} DIRECTORY)
set(ENV{LD_LIBRARY_PATH} ${library_folder})
run(${WORK}/consumer ${SOURCE}/substrate.state)
