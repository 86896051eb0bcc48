# tolvik_test_support: common code of the tests of all rooms, and a precompiled header. It holds system headers only, so
# that a change of our headers compiles no more than without it; for g++ it holds only the one that every test includes,
# so that a file that lacks an include fails in some build.
add_library(tolvik_test_support STATIC ${PROJECT_SOURCE_DIR}/tests/support/http_client.cpp)
target_include_directories(tolvik_test_support PUBLIC ${PROJECT_SOURCE_DIR}/tests)
target_link_libraries(tolvik_test_support PRIVATE tolvik_flags GTest::gtest)
target_precompile_headers(tolvik_test_support PRIVATE <gtest/gtest.h>)
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
  target_precompile_headers(tolvik_test_support PRIVATE <algorithm> <array> <chrono> <cmath> <complex> <filesystem>
                            <fstream> <functional> <limits> <random> <sstream> <string> <thread> <vector>)
endif()

# Tests are compiled far more often than they run: only the libraries are optimised. Besides, g++ 12 warns of
# out-of-bounds copies inside std::string, which do not happen, where it optimises what a precompiled header holds.
set(tolvik_test_options -O0)
# A precompiled header needs the same code generation as its users, which are programs: -fPIE, not -fPIC.
set_target_properties(tolvik_test_support PROPERTIES POSITION_INDEPENDENT_CODE OFF)
target_compile_options(tolvik_test_support PRIVATE ${tolvik_test_options} -fPIE)

# tolvik_test_program(TARGET LIBRARY...): makes a program of GoogleTest tests of it.
function(tolvik_test_program target)
  target_link_libraries(${target} PRIVATE tolvik_flags ${ARGN} tolvik_test_support GTest::gtest_main)
  target_compile_options(${target} PRIVATE ${tolvik_test_options})
  target_precompile_headers(${target} REUSE_FROM tolvik_test_support)
endfunction()
