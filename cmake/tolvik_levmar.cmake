# tolvik::levmar, the Levenberg-Marquardt library of M. Lourakis (box constraints, no LAPACK needed).
#
# Looked for in this order: the folder named by -DLEVMAR_SOURCE_DIR=, an installed library, the source that scripts/setup
# has put into the user's cache folder. A source folder is built as a static library of the double routines.
# fit/levmar_call.cpp gets TOLVIK_LEVMAR_HEADER, the header to include, and TOLVIK_LEVMAR_SCALED where dlevmar_bc_dif has the
# scaling argument of levmar 2.6.
include(CheckCXXSourceCompiles)
include(CMakePushCheckState)

set(LEVMAR_SOURCE_DIR "" CACHE PATH "Unpacked source of levmar 2.3, instead of an installed one or the cached one")
mark_as_advanced(TOLVIK_LEVMAR_LIBRARY TOLVIK_LEVMAR_INCLUDE_DIR)

# Sets result to TRUE when a call of dlevmar_bc_dif with the argument list compiles against header.
function(tolvik_levmar_accepts result header arguments)
  check_cxx_source_compiles("
    extern \"C\" {
    #include <${header}>
    }
    static void f(double*, double*, int, int, void*) {}
    int main() { double* v = nullptr; return dlevmar_bc_dif(${arguments}); }" ${result})
  set(${result} ${${result}} PARENT_SCOPE)
endfunction()

# Finds out which form of the call compiles; tolvik_levmar_form becomes "plain", "scaled" or empty.
function(tolvik_levmar_find_form header key)
  tolvik_levmar_accepts(TOLVIK_LEVMAR_PLAIN_${key} ${header} "f, v, v, 0, 0, v, v, 0, v, v, v, v, nullptr")
  tolvik_levmar_accepts(TOLVIK_LEVMAR_SCALED_${key} ${header} "f, v, v, 0, 0, v, v, v, 0, v, v, v, v, nullptr")
  set(tolvik_levmar_form "")
  if(TOLVIK_LEVMAR_PLAIN_${key})
    set(tolvik_levmar_form plain)
  elseif(TOLVIK_LEVMAR_SCALED_${key})
    set(tolvik_levmar_form scaled)
  endif()
  set(tolvik_levmar_form ${tolvik_levmar_form} PARENT_SCOPE)
endfunction()

function(tolvik_levmar_describe header)
  target_compile_definitions(tolvik_levmar INTERFACE $<BUILD_INTERFACE:TOLVIK_LEVMAR_HEADER=<${header}$<ANGLE-R>>)
  if(tolvik_levmar_form STREQUAL scaled)
    target_compile_definitions(tolvik_levmar INTERFACE $<BUILD_INTERFACE:TOLVIK_LEVMAR_SCALED>)
  endif()
endfunction()

# An installed levmar: header and library are there, and a call of it links.
function(tolvik_levmar_use_installed)
  find_path(TOLVIK_LEVMAR_INCLUDE_DIR NAMES levmar.h lm.h PATH_SUFFIXES levmar)
  find_library(TOLVIK_LEVMAR_LIBRARY NAMES levmar)
  if(NOT TOLVIK_LEVMAR_INCLUDE_DIR OR NOT TOLVIK_LEVMAR_LIBRARY)
    return()
  endif()
  set(header lm.h)
  if(EXISTS ${TOLVIK_LEVMAR_INCLUDE_DIR}/levmar.h)
    set(header levmar.h)
  endif()
  cmake_push_check_state(RESET)
  set(CMAKE_REQUIRED_INCLUDES ${TOLVIK_LEVMAR_INCLUDE_DIR})
  set(libraries ${TOLVIK_LEVMAR_LIBRARY})
  set(CMAKE_REQUIRED_LIBRARIES ${libraries})
  tolvik_levmar_find_form(${header} INSTALLED)
  if(NOT tolvik_levmar_form)  # a static one made with LAPACK
    set(libraries ${TOLVIK_LEVMAR_LIBRARY} lapack blas)
    set(CMAKE_REQUIRED_LIBRARIES ${libraries})
    tolvik_levmar_find_form(${header} INSTALLED_LAPACK)
  endif()
  cmake_pop_check_state()
  if(tolvik_levmar_form)
    add_library(tolvik_levmar INTERFACE)
    target_include_directories(tolvik_levmar SYSTEM INTERFACE $<BUILD_INTERFACE:${TOLVIK_LEVMAR_INCLUDE_DIR}>)
    target_link_libraries(tolvik_levmar INTERFACE ${libraries})
    tolvik_levmar_describe(${header})
    message(STATUS "levmar: ${TOLVIK_LEVMAR_LIBRARY}, ${tolvik_levmar_form} call")
  endif()
endfunction()

# A source folder. Third-party code: no warnings, no sanitizing of undefined behaviour, but the same order of
# operations; -fexceptions because a callback may throw.
function(tolvik_levmar_use_source folder)
  file(STRINGS ${folder}/lm.h without_lapack REGEX "^ *#undef HAVE_LAPACK")
  if(NOT without_lapack)
    message(FATAL_ERROR "levmar: ${folder} is made for LAPACK. Name a folder of levmar 2.3, whose lm.h says "
                        "\"#undef HAVE_LAPACK\", or run scripts/setup, which fetches one.")
  endif()
  add_library(tolvik_levmar STATIC EXCLUDE_FROM_ALL ${folder}/lm.c ${folder}/lmbc.c ${folder}/misc.c ${folder}/Axb.c)
  target_include_directories(tolvik_levmar SYSTEM INTERFACE $<BUILD_INTERFACE:${folder}>)
  target_compile_options(tolvik_levmar PRIVATE -w -fexceptions -ffp-contract=off -fno-sanitize=undefined)
  target_link_libraries(tolvik_levmar PUBLIC m)
  set_target_properties(tolvik_levmar PROPERTIES POSITION_INDEPENDENT_CODE ON C_VISIBILITY_PRESET hidden)

  cmake_push_check_state(RESET)
  set(CMAKE_REQUIRED_INCLUDES ${folder})
  set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)  # the library is not built yet: compile only
  tolvik_levmar_find_form(lm.h SOURCE)
  cmake_pop_check_state()
  tolvik_levmar_describe(lm.h)
  message(STATUS "levmar: source in ${folder}, ${tolvik_levmar_form} call")
endfunction()

if(LEVMAR_SOURCE_DIR)
  if(NOT EXISTS ${LEVMAR_SOURCE_DIR}/lmbc.c OR NOT EXISTS ${LEVMAR_SOURCE_DIR}/lm.h)
    message(FATAL_ERROR "levmar: LEVMAR_SOURCE_DIR=${LEVMAR_SOURCE_DIR} holds no lmbc.c and lm.h. "
                        "Name the unpacked folder levmar-2.3, or leave the option out and run scripts/setup.")
  endif()
  tolvik_levmar_use_source(${LEVMAR_SOURCE_DIR})
else()
  tolvik_levmar_use_installed()
endif()
if(NOT TARGET tolvik_levmar)
  set(tolvik_levmar_cache "$ENV{XDG_CACHE_HOME}")
  if(NOT tolvik_levmar_cache)
    set(tolvik_levmar_cache "$ENV{HOME}/.cache")
  endif()
  if(NOT EXISTS ${tolvik_levmar_cache}/tolvik/levmar-2.3/lmbc.c)
    message(FATAL_ERROR "levmar is neither installed nor in ${tolvik_levmar_cache}/tolvik/levmar-2.3. "
                        "Run scripts/setup, which fetches it, or name an unpacked copy: -DLEVMAR_SOURCE_DIR=FOLDER")
  endif()
  tolvik_levmar_use_source(${tolvik_levmar_cache}/tolvik/levmar-2.3)
endif()
add_library(tolvik::levmar ALIAS tolvik_levmar)
