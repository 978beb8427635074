# cmake -P script: install, configure the consumer, build it, run it.
file(REMOVE_RECURSE "${SCRATCH_DIR}")
set(prefix "${SCRATCH_DIR}/prefix")

function(run)
    execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "Command failed (${result}): ${ARGV}\n${out}\n${err}")
    endif()
    set(last_output "${out}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${prefix}")
run(${CMAKE_COMMAND} -S "${SOURCE_DIR}/tests/package/consumer" -B "${SCRATCH_DIR}/build"
    -G "${GENERATOR}" "-DCMAKE_PREFIX_PATH=${prefix}")
run(${CMAKE_COMMAND} --build "${SCRATCH_DIR}/build")
run("${SCRATCH_DIR}/build/consumer")
if(NOT last_output MATCHES "strip L12")
    message(FATAL_ERROR "Unexpected consumer output: ${last_output}")
endif()
message(STATUS "${last_output}")
