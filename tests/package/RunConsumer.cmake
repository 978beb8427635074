# cmake -P script: install into a scratch prefix; check what was installed;
# configure, build and run the consumer; run an installed program.
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

# Installed programs must run from the prefix without help from the
# environment, as they would after the installation was moved there.
set(clean_env ${CMAKE_COMMAND} -E env --unset=LD_LIBRARY_PATH --unset=KAVIX_ROOT)

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
run(${clean_env} "${SCRATCH_DIR}/build/consumer")
if(NOT last_output MATCHES "strip L12")
    message(FATAL_ERROR "Unexpected consumer output: ${last_output}")
endif()
message(STATUS "${last_output}")
# Without KAVIX_ROOT the library finds the installation it lies in, unless
# the prefix it was configured for holds an installation of its own.
if(NOT EXISTS "${DEFAULT_ROOT}/etc/schemas/sessionData.xsd")
    file(REAL_PATH "${prefix}" real_prefix)
    if(NOT last_output MATCHES "root ([^\n]*)")
        message(FATAL_ERROR "The consumer did not print the installation root: ${last_output}")
    endif()
    file(REAL_PATH "${CMAKE_MATCH_1}" real_root)
    if(NOT real_root STREQUAL real_prefix)
        message(FATAL_ERROR "Installation root ${CMAKE_MATCH_1}, expected the prefix ${prefix}")
    endif()
endif()

# An installed program starts from the prefix and finds its libraries there.
if(HAVE_DATAPREP)
    run(${clean_env} "${prefix}/bin/dataprep" demo --json)
    string(JSON session ERROR_VARIABLE json_error GET "${last_output}" sessionDirectory)
    string(JSON takes ERROR_VARIABLE takes_error LENGTH "${last_output}" takes)
    if(json_error OR takes_error OR NOT takes GREATER 0)
        message(FATAL_ERROR "dataprep demo --json from the prefix gave no session report:\n${last_output}")
    endif()
    message(STATUS "dataprep demo from ${prefix}/bin: session report with ${takes} takes")
endif()
