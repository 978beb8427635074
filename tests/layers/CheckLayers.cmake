# cmake -P script; see CMakeLists.txt beside it. Arguments: COMPILER,
# INCLUDE_DIRS (the platform target's, a list), IMPLICIT_DIRS (the
# compiler's own, left out as the build leaves them out), SOURCE_DIR,
# PROBE_DIR.
cmake_minimum_required(VERSION 3.25)
set(flags -std=c++20 -fsyntax-only)
list(REMOVE_DUPLICATES INCLUDE_DIRS)
foreach(dir IN LISTS INCLUDE_DIRS)
    if(NOT dir IN_LIST IMPLICIT_DIRS)
        list(APPEND flags "-I${dir}")
    endif()
endforeach()

function(compile source result_var output_var)
    # In the C locale, so that the compiler's message can be recognised.
    execute_process(COMMAND "${CMAKE_COMMAND}" -E env LC_ALL=C "${COMPILER}" ${flags} "${PROBE_DIR}/${source}"
        RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
    set(${result_var} "${result}" PARENT_SCOPE)
    set(${output_var} "${out}${err}" PARENT_SCOPE)
endfunction()

# The flags are right: a platform source compiles with them.
compile(PlatformProbe.cpp result output)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "A platform source does not compile with the platform target's include directories "
                        "(${INCLUDE_DIRS}):\n${output}")
endif()

# A datamodel header is out of reach.
compile(LayerViolationProbe.cpp result output)
if(result EQUAL 0)
    message(FATAL_ERROR "A platform source that includes <datamodel/model/Seconds.h> compiled: the platform "
                        "target's include directories (${INCLUDE_DIRS}) reach the datamodel headers")
endif()
if(NOT output MATCHES "datamodel/model/Seconds\\.h: No such file")
    message(FATAL_ERROR "The layer probe failed for another reason than the missing datamodel header:\n${output}")
endif()

# Nor does any platform file reach them by a relative path.
file(GLOB_RECURSE platform_files "${SOURCE_DIR}/platform/*.h" "${SOURCE_DIR}/platform/*.cpp")
set(offenders "")
foreach(path IN LISTS platform_files)
    file(STRINGS "${path}" lines REGEX "^[ \t]*#[ \t]*include[ \t]*[<\"][^>\"]*datamodel/")
    if(lines)
        list(APPEND offenders "${path}: ${lines}")
    endif()
endforeach()
if(offenders)
    list(JOIN offenders "\n" text)
    message(FATAL_ERROR "Platform files include datamodel headers:\n${text}")
endif()
message(STATUS "The platform layer does not see the datamodel headers")
