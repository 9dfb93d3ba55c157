# Installs the build in BUILD_DIR into a fresh prefix, checks what has to lie
# there, then builds the example of the library against it, as a user would with
# warnings as errors, and runs both programs.  The example is a Release build,
# whose flags define NDEBUG: the package leaves that alone.

set(work ${BUILD_DIR}/install-test)
set(prefix ${work}/prefix)
file(REMOVE_RECURSE ${work})

# Runs a command, which must succeed; its output is left in `output`.
macro(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result
                  OUTPUT_VARIABLE output ERROR_VARIABLE errors)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGV}\nended with ${result}:\n${output}${errors}")
  endif()
endmacro()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
foreach(file bin/kestro share/man/man1/kestro.1
        share/bash-completion/completions/kestro
        share/zsh/site-functions/_kestro share/doc/kestro/LICENSE
        include/kestro/kestro.h)
  if(NOT EXISTS ${prefix}/${file})
    message(FATAL_ERROR "not installed: ${file}")
  endif()
endforeach()
file(GLOB_RECURSE headers RELATIVE ${prefix}/include ${prefix}/include/*)
file(GLOB public RELATIVE ${SOURCE_DIR}/include ${SOURCE_DIR}/include/kestro/*.h)
list(SORT headers)
list(SORT public)
if(NOT headers STREQUAL public)
  message(FATAL_ERROR "installed headers: ${headers}\nbut public: ${public}")
endif()

run(${prefix}/bin/kestro --help)
if(NOT output MATCHES "^Usage: kestro ")
  message(FATAL_ERROR "unexpected usage text:\n${output}")
endif()

set(flags "-Wall -Wextra -Werror -DNDEBUG")
if(SANITIZE)
  string(APPEND flags " -fsanitize=${SANITIZE}")
endif()
if(COVERAGE)
  string(APPEND flags " --coverage")
endif()
run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${SOURCE_DIR}/examples/library
    -B ${work}/example -D CMAKE_BUILD_TYPE=Release
    -D CMAKE_CXX_COMPILER=${CXX_COMPILER} -D CMAKE_CXX_FLAGS=${flags}
    -D CMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${work}/example)
run(${work}/example/mine_molecules)
file(READ ${SOURCE_DIR}/examples/library/expected.txt expected)
if(NOT output STREQUAL expected)
  message(FATAL_ERROR "the example printed:\n${output}")
endif()
