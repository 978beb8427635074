# Helpers of the dataprep command tests (included by the *Test.cmake scripts).

function(run expected_code)
    execute_process(COMMAND ${DATAPREP} ${ARGN} RESULT_VARIABLE code OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT code EQUAL expected_code)
        message(FATAL_ERROR "dataprep ${ARGN}: exit ${code}, expected ${expected_code}\n${out}\n${err}")
    endif()
    set(out "${out}" PARENT_SCOPE)
    set(err "${err}" PARENT_SCOPE)
endfunction()

# The value at a JSON path of the last output.
function(expect_json path expected)
    string(JSON value ERROR_VARIABLE error GET "${out}" ${path})
    if(error OR NOT value STREQUAL expected)
        message(FATAL_ERROR "${path} is ${value}, expected ${expected} ${error}:\n${out}")
    endif()
endfunction()

# The JSON type (NULL, NUMBER, STRING, BOOLEAN, ARRAY, OBJECT) at a path.
function(expect_type path expected)
    string(JSON type ERROR_VARIABLE error TYPE "${out}" ${path})
    if(error OR NOT type STREQUAL expected)
        message(FATAL_ERROR "${path} is ${type}, expected ${expected} ${error}:\n${out}")
    endif()
endfunction()

function(expect_in text needle)
    string(FIND "${text}" "${needle}" at)
    if(at EQUAL -1)
        message(FATAL_ERROR "expected \"${needle}\" in:\n${text}")
    endif()
endfunction()
