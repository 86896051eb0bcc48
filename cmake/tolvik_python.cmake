# SPDX-License-Identifier: GPL-2.0-or-later
# The Python package: the module _core from python/src/ and the modules of python/tolvik/, together in
# build/python/tolvik, so that PYTHONPATH=build/python imports it.
#
# The interpreter is the first one that imports numpy: the first on the path need not be the one of the system.
# -DPython_EXECUTABLE=... names another.
function(tolvik_find_python result)
  set(candidates ${Python_EXECUTABLE})
  foreach(folder $ENV{PATH} /usr/bin /usr/local/bin)
    string(REPLACE ":" ";" folders "${folder}")
    foreach(each ${folders})
      list(APPEND candidates ${each}/python3)
    endforeach()
  endforeach()
  list(REMOVE_DUPLICATES candidates)
  foreach(candidate ${candidates})
    if(EXISTS ${candidate})
      execute_process(COMMAND ${candidate} -c "import numpy" RESULT_VARIABLE failed OUTPUT_QUIET ERROR_QUIET)
      if(NOT failed)
        set(${result} ${candidate} PARENT_SCOPE)
        return()
      endif()
    endif()
  endforeach()
  set(${result} "" PARENT_SCOPE)
endfunction()

set(python_found OFF)
tolvik_find_python(python_with_numpy)
if(python_with_numpy AND NOT TOLVIK_SANITIZE)
  set(Python_EXECUTABLE ${python_with_numpy} CACHE FILEPATH "Interpreter of the Python package" FORCE)
  find_package(Python COMPONENTS Interpreter Development.Module QUIET)
  find_package(pybind11 CONFIG QUIET)
  if(Python_FOUND AND pybind11_FOUND)
    set(python_found ON)
  endif()
endif()
option(TOLVIK_PYTHON "Build the Python package (needs pybind11 and an interpreter with numpy)" ${python_found})
if(NOT TOLVIK_PYTHON)
  return()
endif()
if(NOT python_found)
  message(FATAL_ERROR "TOLVIK_PYTHON needs pybind11, the headers of Python and an interpreter that imports numpy: "
                      "run scripts/setup, or name one with -DPython_EXECUTABLE=")
endif()

set(python_folder ${PROJECT_SOURCE_DIR}/python)
set(python_build ${PROJECT_BINARY_DIR}/python/tolvik)
file(GLOB sources CONFIGURE_DEPENDS ${python_folder}/src/*.cpp)
pybind11_add_module(tolvik_core MODULE NO_EXTRAS ${sources})
target_link_libraries(tolvik_core PRIVATE tolvik_flags tolvik_analysis)
target_include_directories(tolvik_core PRIVATE ${python_folder}/src)
# The binding calculates nothing: small code, compiled in half the time.
target_compile_options(tolvik_core PRIVATE $<$<CONFIG:Release>:-Os>)
target_compile_definitions(tolvik_core PRIVATE TOLVIK_VERSION="${PROJECT_VERSION}")
set_target_properties(tolvik_core PROPERTIES OUTPUT_NAME _core LIBRARY_OUTPUT_DIRECTORY ${python_build})

# The modules are linked, not copied: an edit is seen without a build.
add_custom_target(tolvik_python ALL DEPENDS tolvik_core
                  COMMAND ${CMAKE_COMMAND} -DFROM=${python_folder}/tolvik -DTO=${python_build}
                          -P ${PROJECT_SOURCE_DIR}/cmake/link_folder.cmake
                  COMMENT "Linking the Python package")

if(NOT TOLVIK_INSTALL)
  return()
endif()

# The place below the prefix where the interpreter looks: Debian has three.
set(scheme_of_prefix "import sys, sysconfig
p = sys.argv[1]
debian = 'deb_system' in sysconfig.get_scheme_names()
name = 'deb_system' if debian and p == '/usr' else 'posix_prefix'
path = sysconfig.get_path('platlib', name, vars={'base': p, 'platbase': p})
print(path.replace('site-packages', 'dist-packages') if debian and p == '/usr/local' else path)")
execute_process(COMMAND ${Python_EXECUTABLE} -c "${scheme_of_prefix}" ${CMAKE_INSTALL_PREFIX}
                OUTPUT_VARIABLE python_place OUTPUT_STRIP_TRAILING_WHITESPACE)
file(RELATIVE_PATH python_place ${CMAKE_INSTALL_PREFIX} ${python_place})
set(TOLVIK_PYTHON_FOLDER ${python_place} CACHE STRING "Where the Python package is installed, below the prefix")
install(DIRECTORY ${python_folder}/tolvik DESTINATION ${TOLVIK_PYTHON_FOLDER}
        PATTERN "__pycache__" EXCLUDE PATTERN ".mypy_cache" EXCLUDE)
install(TARGETS tolvik_core LIBRARY DESTINATION ${TOLVIK_PYTHON_FOLDER}/tolvik)

# The commands that pyproject.toml names, for this interpreter.
file(RELATIVE_PATH TOLVIK_PYTHON_FROM_COMMANDS ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_PREFIX}/${TOLVIK_PYTHON_FOLDER})
file(STRINGS ${python_folder}/pyproject.toml commands REGEX "^tolvik-[a-z]+ = \"tolvik\\.tools\\.")
foreach(command ${commands})
  string(REGEX MATCH "^(tolvik-[a-z]+) = \"([a-z.]+):main\"$" matched "${command}")
  set(TOLVIK_COMMAND_MODULE ${CMAKE_MATCH_2})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/command.py.in ${PROJECT_BINARY_DIR}/commands/${CMAKE_MATCH_1} @ONLY)
  install(PROGRAMS ${PROJECT_BINARY_DIR}/commands/${CMAKE_MATCH_1} DESTINATION ${CMAKE_INSTALL_BINDIR})
endforeach()
