# Installs the build in BUILD_DIR into a fresh prefix, checks what has to lie
# there, then builds the consumer project against it and runs both programs.
# The consumer is a Release build, whose flags define NDEBUG: our headers refuse
# that, so its building shows that the package takes the definition back.

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
        include/kestro/base/ksstack.h)
  if(NOT EXISTS ${prefix}/${file})
    message(FATAL_ERROR "not installed: ${file}")
  endif()
endforeach()

run(${prefix}/bin/kestro --help)
if(NOT output MATCHES "^Usage: kestro ")
  message(FATAL_ERROR "unexpected usage text:\n${output}")
endif()

set(flags "")
if(SANITIZE)
  set(flags -fsanitize=${SANITIZE})
endif()
if(COVERAGE)
  set(flags --coverage)
endif()
run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${CMAKE_CURRENT_LIST_DIR}/consumer
    -B ${work}/consumer -D CMAKE_BUILD_TYPE=Release
    -D CMAKE_CXX_COMPILER=${CXX_COMPILER} -D CMAKE_CXX_FLAGS=${flags}
    -D CMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${work}/consumer)
run(${work}/consumer/consumer)
if(NOT output STREQUAL "equal 1, differs 1\n")
  message(FATAL_ERROR "the consumer printed:\n${output}")
endif()
