# dataprep prepare on simulated sessions: run with
#   cmake -DDATAPREP=<dataprep> -DWORK=<scratch folder> -P PrepareCommandTest.cmake

cmake_minimum_required(VERSION 3.25)

include(${CMAKE_CURRENT_LIST_DIR}/DataprepTestSupport.cmake)

file(REMOVE_RECURSE "${WORK}")

# A clean flight of two lines, the first with a dark take: every CTG file is
# written, the dark take is attached, both trajectories cover every take and
# nothing is reported.
set(session "${WORK}/clean")
run(0 simulate "${session}" --preset tiny --takes 2 --dark-takes 1 --seed 5 --json)
run(0 prepare "${session}" --json)
expect_json("ctgFiles;written" 6)
expect_json("takes;1;name" L001)
expect_json("takes;1;darkTakes;0" DK001)
expect_json("takes;2;coveredBy;1" sbet_S260514_0830.out)
string(JSON messages LENGTH "${out}" messages)
if(NOT messages EQUAL 0)
    message(FATAL_ERROR "unexpected messages:\n${out}")
endif()

# A trajectory that ends in the middle of the last take leaves it uncovered.
set(short "${WORK}/short")
run(0 simulate "${short}" --preset tiny --takes 2 --fault short-trajectory --seed 5 --json)
run(1 prepare "${short}")
expect_in("${err}" "error: take L002: No trajectory covers take L002")
expect_in("${out}" "Covered by  (no trajectory)")

# Not a session.
run(1 prepare "${WORK}/missing")
expect_in("${err}" "Can't find path provided for RecordingSession: ${WORK}/missing")

file(REMOVE_RECURSE "${WORK}")
