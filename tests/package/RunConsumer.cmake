# cmake -P script: install into a scratch prefix; check what was installed;
# configure, build and run the consumer.
cmake_minimum_required(VERSION 3.25)
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

# Only the public API is installed: both layers' headers, no private one.
file(GLOB_RECURSE private_headers RELATIVE "${prefix}" "${prefix}/*_p.h")
if(private_headers)
    message(FATAL_ERROR "Private headers were installed: ${private_headers}")
endif()
foreach(header datamodel/model/InfoFile.h datamodel/model/Seconds.h platform/util/Seconds.h platform/geo/coordSys.h)
    if(NOT EXISTS "${prefix}/include/${header}")
        message(FATAL_ERROR "Public header not installed: include/${header}")
    endif()
endforeach()

# The consumer also compiles every installed header on its own.
run(${CMAKE_COMMAND} -S "${SOURCE_DIR}/tests/package/consumer" -B "${SCRATCH_DIR}/build"
    -G "${GENERATOR}" "-DCMAKE_PREFIX_PATH=${prefix}" "-DDATAMODEL_INCLUDE_DIR=${prefix}/include")
run(${CMAKE_COMMAND} --build "${SCRATCH_DIR}/build" --parallel 2)
run("${SCRATCH_DIR}/build/consumer")
if(NOT last_output MATCHES "strip L12")
    message(FATAL_ERROR "Unexpected consumer output: ${last_output}")
endif()
message(STATUS "${last_output}")
