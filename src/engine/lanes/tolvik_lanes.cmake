# Each source of an instruction set gets that set's flags, and is optimised in every build: without inlining,
# functions of the vector library would be in the object as symbols of their own.
set(folder ${CMAKE_CURRENT_LIST_DIR})
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
  set_source_files_properties(${folder}/sse.cpp PROPERTIES COMPILE_OPTIONS "-O3;-fno-exceptions;-march=x86-64-v2")
  set_source_files_properties(${folder}/avx2.cpp PROPERTIES COMPILE_OPTIONS "-O3;-fno-exceptions;-march=x86-64-v3")
  set(avx512 -O3 -fno-exceptions -march=x86-64-v4)
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # GCC's own avx512fintrin.h makes its undefined registers from themselves (GCC bug 105593).
    list(APPEND avx512 -Wno-maybe-uninitialized -Wno-uninitialized)
    # With 32 registers there is room to interleave chains of steps before registers are allocated: a gain of
    # 5 percent.
    list(APPEND avx512 -fschedule-insns -fsched-pressure)
  endif()
  set_source_files_properties(${folder}/avx512.cpp PROPERTIES COMPILE_OPTIONS "${avx512}")
  set_source_files_properties(${folder}/sse.cpp ${folder}/avx2.cpp ${folder}/avx512.cpp
                              PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "aarch64|arm64")
  set_source_files_properties(${folder}/neon.cpp PROPERTIES COMPILE_OPTIONS "-O3;-fno-exceptions"
                              SKIP_PRECOMPILE_HEADERS ON)
endif()
