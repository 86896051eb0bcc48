# Levmar::levmar, the Levenberg-Marquardt library of M. Lourakis (box constraints, no LAPACK needed).
#
# In this order: the folder named by -DLEVMAR_SOURCE_DIR=, an installed library, the source that scripts/setup has
# put into the user's cache folder. A source folder is built as a static library of the double routines.
# Callers get TOLVIK_LEVMAR_HEADER, the header to include, and TOLVIK_LEVMAR_SCALED where dlevmar_bc_dif has the
# scaling argument of levmar 2.6.
include(CheckCXXSourceCompiles)
include(CMakePushCheckState)

set(LEVMAR_SOURCE_DIR "" CACHE PATH "Unpacked source of levmar 2.3, instead of an installed one or the cached one")
mark_as_advanced(Levmar_LIBRARY Levmar_INCLUDE_DIR)

# Sets result to TRUE when a call of dlevmar_bc_dif with the argument list compiles against header.
function(levmar_accepts result header arguments)
  check_cxx_source_compiles("
    extern \"C\" {
    #include <${header}>
    }
    static void f(double*, double*, int, int, void*) {}
    int main() { double* v = nullptr; return dlevmar_bc_dif(${arguments}); }" ${result})
  set(${result} ${${result}} PARENT_SCOPE)
endfunction()

# Finds out which form of the call holds; levmar_form becomes "plain", "scaled" or empty.
function(levmar_find_form header key)
  levmar_accepts(LEVMAR_PLAIN_${key} ${header} "f, v, v, 0, 0, v, v, 0, v, v, v, v, nullptr")
  levmar_accepts(LEVMAR_SCALED_${key} ${header} "f, v, v, 0, 0, v, v, v, 0, v, v, v, v, nullptr")
  set(levmar_form "")
  if(LEVMAR_PLAIN_${key})
    set(levmar_form plain)
  elseif(LEVMAR_SCALED_${key})
    set(levmar_form scaled)
  endif()
  set(levmar_form ${levmar_form} PARENT_SCOPE)
endfunction()

function(levmar_describe target header)
  target_compile_definitions(${target} INTERFACE TOLVIK_LEVMAR_HEADER=<${header}>
                             $<$<STREQUAL:${levmar_form},scaled>:TOLVIK_LEVMAR_SCALED>)
endfunction()

# An installed one: header and library, and a call of it links.
function(levmar_use_installed)
  find_path(Levmar_INCLUDE_DIR NAMES levmar.h lm.h PATH_SUFFIXES levmar)
  find_library(Levmar_LIBRARY NAMES levmar)
  if(NOT Levmar_INCLUDE_DIR OR NOT Levmar_LIBRARY)
    return()
  endif()
  set(header lm.h)
  if(EXISTS ${Levmar_INCLUDE_DIR}/levmar.h)
    set(header levmar.h)
  endif()
  cmake_push_check_state(RESET)
  set(CMAKE_REQUIRED_INCLUDES ${Levmar_INCLUDE_DIR})
  set(libraries ${Levmar_LIBRARY})
  set(CMAKE_REQUIRED_LIBRARIES ${libraries})
  levmar_find_form(${header} INSTALLED)
  if(NOT levmar_form)  # a static one made with LAPACK
    set(libraries ${Levmar_LIBRARY} lapack blas)
    set(CMAKE_REQUIRED_LIBRARIES ${libraries})
    levmar_find_form(${header} INSTALLED_LAPACK)
  endif()
  cmake_pop_check_state()
  if(levmar_form)
    add_library(Levmar::levmar INTERFACE IMPORTED)
    target_include_directories(Levmar::levmar INTERFACE ${Levmar_INCLUDE_DIR})
    target_link_libraries(Levmar::levmar INTERFACE ${libraries})
    levmar_describe(Levmar::levmar ${header})
    message(STATUS "levmar: ${Levmar_LIBRARY}, ${levmar_form} call")
  endif()
endfunction()

# A source folder. Third-party code: no warnings, no sanitizing of undefined behaviour, but the same promise about
# the order of operations; -fexceptions because a callback may throw.
function(levmar_use_source folder)
  file(STRINGS ${folder}/lm.h without_lapack REGEX "^ *#undef HAVE_LAPACK")
  if(NOT without_lapack)
    message(FATAL_ERROR "levmar: ${folder} is made for LAPACK. Name a folder of levmar 2.3, whose lm.h says "
                        "\"#undef HAVE_LAPACK\", or run scripts/setup, which fetches one.")
  endif()
  add_library(levmar STATIC EXCLUDE_FROM_ALL ${folder}/lm.c ${folder}/lmbc.c ${folder}/misc.c ${folder}/Axb.c)
  target_include_directories(levmar SYSTEM INTERFACE ${folder})
  target_compile_options(levmar PRIVATE -w -fexceptions -ffp-contract=off -fno-sanitize=undefined)
  target_link_libraries(levmar PUBLIC m)
  set_target_properties(levmar PROPERTIES POSITION_INDEPENDENT_CODE ON C_VISIBILITY_PRESET hidden)
  add_library(Levmar::levmar ALIAS levmar)

  cmake_push_check_state(RESET)
  set(CMAKE_REQUIRED_INCLUDES ${folder})
  set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)  # the library is not built yet: compile only
  levmar_find_form(lm.h SOURCE)
  cmake_pop_check_state()
  levmar_describe(levmar lm.h)
  message(STATUS "levmar: source in ${folder}, ${levmar_form} call")
endfunction()

if(NOT TARGET Levmar::levmar)
  if(LEVMAR_SOURCE_DIR)
    if(NOT EXISTS ${LEVMAR_SOURCE_DIR}/lmbc.c OR NOT EXISTS ${LEVMAR_SOURCE_DIR}/lm.h)
      message(FATAL_ERROR "levmar: LEVMAR_SOURCE_DIR=${LEVMAR_SOURCE_DIR} holds no lmbc.c and lm.h. "
                          "Name the unpacked folder levmar-2.3, or leave the option out and run scripts/setup.")
    endif()
    levmar_use_source(${LEVMAR_SOURCE_DIR})
  else()
    levmar_use_installed()
  endif()
endif()
if(NOT TARGET Levmar::levmar)
  set(levmar_cache "$ENV{XDG_CACHE_HOME}")
  if(NOT levmar_cache)
    set(levmar_cache "$ENV{HOME}/.cache")
  endif()
  if(NOT EXISTS ${levmar_cache}/tolvik/levmar-2.3/lmbc.c)
    message(FATAL_ERROR "levmar is neither installed nor in ${levmar_cache}/tolvik/levmar-2.3. "
                        "Run scripts/setup, which fetches it, or name an unpacked copy: -DLEVMAR_SOURCE_DIR=FOLDER")
  endif()
  levmar_use_source(${levmar_cache}/tolvik/levmar-2.3)
endif()
set(Levmar_FOUND TRUE)
