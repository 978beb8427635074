# The flight simulator run as separate processes: the same seed gives the
# same bytes in every file (hash order differs between processes), and a
# working folder left by a process that no longer runs is removed.
#   cmake -DFLIGHTSIM=<flightsim> -DWORK=<scratch folder> -P SeparateRunsTest.cmake
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}/.b.flightsim-999999999-stale/raw")
foreach(name a b)
    execute_process(COMMAND "${FLIGHTSIM}" "${WORK}/${name}" --preset tiny --seed 11 --session-data
                    RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE err)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "flightsim ${name} failed (${result}): ${err}")
    endif()
endforeach()

file(GLOB_RECURSE files RELATIVE "${WORK}/a" "${WORK}/a/*")
list(LENGTH files count)
if(count LESS 15)
    message(FATAL_ERROR "too few files simulated: ${files}")
endif()
foreach(file IN LISTS files)
    execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files "${WORK}/a/${file}" "${WORK}/b/${file}"
                    RESULT_VARIABLE differs)
    if(differs)
        message(FATAL_ERROR "${file} differs between two runs with the same seed")
    endif()
endforeach()

if(EXISTS "${WORK}/.b.flightsim-999999999-stale")
    message(FATAL_ERROR "the stale working folder was not removed")
endif()
file(REMOVE_RECURSE "${WORK}")
