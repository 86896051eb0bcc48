# tolvik_test_support: what the tests of all rooms share.
add_library(tolvik_test_support STATIC ${PROJECT_SOURCE_DIR}/tests/support/http_client.cpp)
target_include_directories(tolvik_test_support PUBLIC ${PROJECT_SOURCE_DIR}/tests)
target_link_libraries(tolvik_test_support PRIVATE tolvik_flags)

# Tests are compiled far more often than they run.
set(tolvik_test_options $<$<CONFIG:Release>:-O1> $<$<CONFIG:Sanitize>:-O0>)

# tolvik_test_program(TARGET LIBRARY...): makes a program of GoogleTest tests of it.
function(tolvik_test_program target)
  target_link_libraries(${target} PRIVATE ${ARGN} tolvik_test_support GTest::gtest_main)
  target_compile_options(${target} PRIVATE ${tolvik_test_options})
endfunction()
