# dataprep ctg on a simulated session (one take and one dark take of two
# bands each): run with
#   cmake -DDATAPREP=<dataprep> -DWORK=<scratch folder> -P CtgCommandTest.cmake

cmake_minimum_required(VERSION 3.25)

include(${CMAKE_CURRENT_LIST_DIR}/DataprepTestSupport.cmake)

file(REMOVE_RECURSE "${WORK}")
set(session "${WORK}/session")
run(0 simulate "${session}" --preset tiny --dark-takes 1 --seed 3 --json)

# Every band, the dark take's too, gets its CTG file.
run(0 ctg "${session}")
expect_in("${out}" "Wrote 4 CTG files; 0 already present; 0 failed.")

# A band whose CT file is cut short: its CTG file is not written, and the CT
# reader's reason is given for the band; the other band's file is present.
file(GLOB ct "${session}/raw/L001PANN00A.ct")
string(REPLACE ".ct" ".ctg" ctg "${ct}")
file(REMOVE "${ctg}")
file(WRITE "${ct}" "CT01")
run(1 ctg "${session}" --take L001)
expect_in("${err}" "error: take L001, band PANN00A: CT file is truncated: ${ct} (4 bytes, the header alone takes 16)")
expect_in("${out}" "Wrote 0 CTG files; 1 already present; 1 failed.")
if(EXISTS "${ctg}")
    message(FATAL_ERROR "a CTG file was written from a truncated CT file")
endif()

file(REMOVE_RECURSE "${WORK}")
