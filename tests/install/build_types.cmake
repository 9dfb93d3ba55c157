# Assertions stay on whatever the build type: configures the project with each
# one, and with none, and compiles a source that refuses NDEBUG.

set(work ${BUILD_DIR}/build-types-test)
file(REMOVE_RECURSE ${work})
set(object src/CMakeFiles/kestro_core.dir/base/error.cpp.o)

foreach(type "" Debug Release RelWithDebInfo MinSizeRel)
  set(build ${work}/type-${type})
  execute_process(
    COMMAND ${CMAKE_COMMAND} -G Ninja -S ${SOURCE_DIR} -B ${build}
            -D CMAKE_CXX_COMPILER=${CXX_COMPILER} -D CMAKE_BUILD_TYPE=${type}
    RESULT_VARIABLE configured OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT configured EQUAL 0)
    message(FATAL_ERROR "build type '${type}' does not configure:\n${output}")
  endif()
  # The source includes base/error.h, which does not compile under NDEBUG.
  execute_process(COMMAND ${CMAKE_COMMAND} --build ${build} --target ${object}
                  RESULT_VARIABLE built OUTPUT_VARIABLE output)
  if(NOT built EQUAL 0)
    message(FATAL_ERROR "build type '${type}' does not compile:\n${output}")
  endif()
endforeach()

file(STRINGS ${work}/type-/CMakeCache.txt chosen REGEX "^CMAKE_BUILD_TYPE")
if(NOT chosen STREQUAL "CMAKE_BUILD_TYPE:STRING=Release")
  message(FATAL_ERROR "without a build type it chose: ${chosen}")
endif()
