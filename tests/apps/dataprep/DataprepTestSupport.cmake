# Helpers of the dataprep command tests (included by the *CommandTest.cmake scripts).

function(run expected_code)
    execute_process(COMMAND ${DATAPREP} ${ARGN} RESULT_VARIABLE code OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT code EQUAL expected_code)
        message(FATAL_ERROR "dataprep ${ARGN}: exit ${code}, expected ${expected_code}\n${out}\n${err}")
    endif()
    set(out "${out}" PARENT_SCOPE)
    set(err "${err}" PARENT_SCOPE)
endfunction()

function(expect_json json expected)
    string(JSON value GET "${out}" ${json})
    if(NOT value STREQUAL expected)
        message(FATAL_ERROR "${json} is ${value}, expected ${expected}:\n${out}")
    endif()
endfunction()

function(expect_in text needle)
    string(FIND "${text}" "${needle}" at)
    if(at EQUAL -1)
        message(FATAL_ERROR "expected \"${needle}\" in:\n${text}")
    endif()
endfunction()
