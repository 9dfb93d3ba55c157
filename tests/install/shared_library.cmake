# Builds the library as a shared one and checks what it shows, then runs the
# program that goes with it.

set(build ${BUILD_DIR}/shared-test)

macro(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result
                  OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGV}\nended with ${result}:\n${output}")
  endif()
endmacro()

run(${CMAKE_COMMAND} -G Ninja -S ${SOURCE_DIR} -B ${build}
    -D CMAKE_CXX_COMPILER=${CXX_COMPILER} -D BUILD_SHARED_LIBS=ON
    -D CMAKE_BUILD_TYPE=Debug -D CMAKE_CXX_FLAGS_DEBUG=-O0)
run(${CMAKE_COMMAND} --build ${build})
run(${PYTHON} ${SOURCE_DIR}/tests/install/shown_symbols.py
    ${build}/src/libkestro_core.so ${SOURCE_DIR}/include)
run(${build}/src/kestro --help)
