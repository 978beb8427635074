# dataprep ctg and inspect on a simulated session: run with
#   cmake -DDATAPREP=<dataprep> -DWORK=<scratch folder> -P CtgCommandTest.cmake
# The tiny flight has one take and one dark take of two bands each.

cmake_minimum_required(VERSION 3.25)

include(${CMAKE_CURRENT_LIST_DIR}/DataprepTestSupport.cmake)

file(REMOVE_RECURSE "${WORK}")
set(session "${WORK}/session")
run(0 simulate "${session}" --preset tiny --dark-takes 1 --seed 3 --json)
file(GLOB tm "${session}/gps-imu/*/extract/tm*.dat")

# Every band gets its CTG file; a second run finds them all present.
run(0 ctg "${session}" --json)
expect_json(written 4)
expect_json(present 0)
expect_json(failed 0)
expect_json("bands;2;take" L001)
expect_json("bands;2;lines" 400)
string(JSON ctg GET "${out}" bands 2 ctg)
run(0 ctg "${session}")
expect_in("${out}" "Wrote 0 CTG files; 4 already present; 0 failed.")

# inspect reads all three timing files.
run(0 inspect "${ctg}" --json)
expect_json(lines 400)
expect_json(nonUniformCT OFF)
expect_json("stretches;0;lines" 400)
run(0 inspect "${tm}" --json)
expect_json(regular ON)
expect_json(gpsRollover OFF)
expect_json(gpsPeriod 1)
string(REPLACE ".ctg" ".ct" ct "${ctg}")
run(0 inspect "${ct}" --json)
expect_json(lines 400)
expect_json(stepsNotRising 0)

# A band whose CT file is cut short: its CTG is not written, and the reason
# of the CT reader is given with the camera-time message.
file(REMOVE "${ctg}")
file(WRITE "${ct}" "CT01")
run(1 ctg "${session}" --take L001)
expect_in("${err}" "Can't read ct file: ${ct} (CT file is truncated: ${ct} (4 bytes, the header alone takes 16))")
expect_in("${out}" "Wrote 0 CTG files; 1 already present; 1 failed.")

run(2 ctg)
file(REMOVE_RECURSE "${WORK}")
