# tolvik_room(NAME [LOWER room] [LIBRARIES lib...])
#
# Makes one folder of src/ one static library tolvik_NAME, and its tests (the *_test.cpp beside the code) one
# program tolvik_NAME_tests. A test program links its own room and the rooms below only, so that a call of a
# higher room fails to link. src/app/main.cpp belongs to the program, not to the room.
function(tolvik_room name)
  cmake_parse_arguments(ROOM "" "LOWER" "LIBRARIES" ${ARGN})
  set(folder ${PROJECT_SOURCE_DIR}/src/${name})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${folder}/*.cpp)
  set(tests ${sources})
  list(FILTER tests INCLUDE REGEX "_test\\.cpp$")
  list(FILTER sources EXCLUDE REGEX "_test\\.cpp$|app/main\\.cpp$")
  if(TOLVIK_SANITIZE STREQUAL "thread")  # only what starts threads has something to show there
    list(FILTER tests INCLUDE REGEX "parallel_test|web_server_test")
  endif()

  add_library(tolvik_${name} STATIC ${sources})
  target_link_libraries(tolvik_${name} PRIVATE $<BUILD_INTERFACE:tolvik_flags> PUBLIC ${ROOM_LIBRARIES})
  target_include_directories(tolvik_${name} INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)
  target_compile_features(tolvik_${name} INTERFACE cxx_std_20)
  if(ROOM_LOWER)
    target_link_libraries(tolvik_${name} PUBLIC tolvik_${ROOM_LOWER})
  endif()
  # System headers are precompiled in clang's sanitizer builds only: a file that lacks an include must fail in some build.
  if(NOT TOLVIK_SANITIZE OR NOT CMAKE_CXX_COMPILER_ID MATCHES Clang)
  elseif(ROOM_LOWER)
    target_precompile_headers(tolvik_${name} REUSE_FROM tolvik_optics)
  else()
    target_precompile_headers(tolvik_${name} PRIVATE <algorithm> <array> <charconv> <cmath> <complex> <cstdio>
                              <cstring> <fstream> <functional> <limits> <memory> <sstream> <string> <vector>)
  endif()
  if(TOLVIK_TESTS AND tests)
    add_executable(tolvik_${name}_tests ${tests})
    tolvik_test_program(tolvik_${name}_tests tolvik_${name})
    add_test(NAME ${name} COMMAND tolvik_${name}_tests)
  endif()
endfunction()
