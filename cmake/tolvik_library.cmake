# build/libtolvik.so, the same code as the program, loadable by a front end.
#
# Every room is included whole: a front end calls functions that the library itself does not call.
set(rooms tolvik_app tolvik_server tolvik_fit tolvik_engine tolvik_script tolvik_model tolvik_optics)
list(JOIN rooms "," rooms_whole)
function(tolvik_link_rooms target)
  target_link_libraries(${target} PRIVATE tolvik_flags tolvik_app)
  set_target_properties(${target} PROPERTIES LINK_LIBRARY_OVERRIDE "WHOLE_ARCHIVE,${rooms_whole}")
endfunction()

# The exported names are exactly those that tolvik.h marks: hidden visibility alone would export the weak symbols of the
# standard library's templates, and a front end could link ours instead of its own.
set(header ${PROJECT_SOURCE_DIR}/include/tolvik/tolvik.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
file(STRINGS ${header} marked REGEX "^TOLVIK_EXPORT .*[(]")
set(names "")
foreach(line ${marked})
  string(REGEX MATCH "([A-Za-z0-9_]+)[(]" name "${line}")
  string(APPEND names "    ${CMAKE_MATCH_1};\n")
endforeach()
set(version_script ${PROJECT_BINARY_DIR}/libtolvik.map)
file(CONFIGURE OUTPUT ${version_script} CONTENT "{\n  global:\n@names@  local:\n    *;\n};\n" @ONLY)

add_library(tolvik SHARED)
add_library(tolvik::tolvik ALIAS tolvik)
tolvik_link_rooms(tolvik)
target_sources(tolvik PRIVATE ${version_script})
set_property(TARGET tolvik PROPERTY LINKER_LANGUAGE CXX)
target_link_options(tolvik PRIVATE -Wl,--version-script=${version_script})
if(NOT TOLVIK_SANITIZE)  # the sanitizers' own symbols come from the program
  target_link_options(tolvik PRIVATE -Wl,-z,defs)
endif()
set_property(TARGET tolvik APPEND PROPERTY LINK_DEPENDS ${version_script})
set_target_properties(tolvik PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
                      LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
target_include_directories(tolvik INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)
target_compile_features(tolvik INTERFACE cxx_std_20)

# tolvik::model: the state file for front ends in C++, which hold the records and need a reader and a writer for them.
add_library(tolvik::model ALIAS tolvik_model)
if(TARGET tolvik_analysis)  # Fits from C++: measurements, parameters, objectives.
  add_library(tolvik::analysis ALIAS tolvik_analysis)
endif()
