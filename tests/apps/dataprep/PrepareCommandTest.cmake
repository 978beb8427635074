# dataprep prepare on simulated sessions: run with
#   cmake -DDATAPREP=<dataprep> -DWORK=<scratch folder> -P PrepareCommandTest.cmake

cmake_minimum_required(VERSION 3.25)

include(${CMAKE_CURRENT_LIST_DIR}/DataprepTestSupport.cmake)

file(REMOVE_RECURSE "${WORK}")

# A clean flight of two lines, each with a dark take: every CTG file is
# written, the dark takes are attached, both trajectories cover every take,
# and nothing but information is reported.
set(session "${WORK}/clean")
run(0 simulate "${session}" --preset tiny --takes 2 --dark-takes 2 --seed 5 --json)
run(0 prepare "${session}" --json)
expect_json("ctgFiles;written" 8)
expect_json("takes;2;name" L001)
expect_json("takes;2;darkTakes;0" DK001)
expect_json("takes;3;coveredBy;1" sbet_S260514_0830.out)
string(JSON count LENGTH "${out}" messages)
math(EXPR last "${count} - 1")
foreach(i RANGE ${last})
    string(JSON severity GET "${out}" messages ${i} severity)
    if(NOT severity STREQUAL "information")
        message(FATAL_ERROR "unexpected ${severity}:\n${out}")
    endif()
endforeach()

# The EOPs of every take: prepare writes them, eop writes them from the
# trajectory asked for, inspect reads them back.
expect_json("takes;2;eop;trajectory" sbet_S260514_0830.out)
expect_json("takes;2;eop;file" "${session}/raw/L001.eop")
run(0 eop "${session}" --take L002 --trajectory S260514_0830.sol --json)
expect_json("takes;0;name" L002)
expect_json("takes;0;eop;trajectory" S260514_0830.sol)
run(0 inspect "${session}/raw/L002.eop" --json)
expect_json("eop;positionSource" "${session}/gps-imu/S260514_0830/proc/S260514_0830.sol")
run(1 eop "${session}" --trajectory nothing.sol)
expect_in("${err}" "No trajectory nothing.sol in ${session}")

# A trajectory that ends in the middle of the last take leaves its last
# scan lines uncovered, band by band; validate says the same and writes nothing.
set(short "${WORK}/short")
run(0 simulate "${short}" --preset tiny --takes 2 --dark-takes 2 --fault short-trajectory --seed 5 --json)
run(1 validate "${short}")
expect_in("${out}" "note: CTG file ${short}/raw/L001PANN00A.ctg not yet created. Skipping trajectory coverage validation.")
run(1 prepare "${short}")
expect_in("${err}" "error: take L002, band PANN00A: GPS times between ")
expect_in("${err}" "not covered by trajectory ${short}/gps-imu/S260514_0830/proc/S260514_0830.sol")
expect_in("${out}" "Covered by  (no trajectory)")
run(1 validate "${short}" --take L002)
expect_in("${out}" "Take L002\n  error: GPS time is out side of recording time for the trajectory.")
expect_in("${out}" "  Band PANN00A\n    error: GPS times between ")
run(1 validate "${short}" --json)
expect_json("errorCount" 3)
# The session's information first, then take L002's errors.
expect_type("messages;0;take" NULL)
expect_json("messages;1;severity" error)
expect_json("messages;1;take" L002)

# Not a session.
run(1 prepare "${WORK}/missing")
expect_in("${err}" "Can't find path provided for RecordingSession: ${WORK}/missing")

file(REMOVE_RECURSE "${WORK}")
