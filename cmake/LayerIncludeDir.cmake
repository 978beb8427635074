# datamodel_layer_include_dir(<folder> <out-var>)
#
# Sets <out-var> to a directory in the build tree that holds nothing but the
# symbolic link <folder> -> ${PROJECT_SOURCE_DIR}/<folder>. Given to a target
# as its include directory (as the base directory of its header file set),
# it makes `#include <folder/...>` work and nothing else of the source tree
# reachable: a platform source that includes <datamodel/...> does not
# compile, where the project root as include directory would let it.
function(datamodel_layer_include_dir folder out)
    set(dir "${PROJECT_BINARY_DIR}/layers/${folder}")
    file(MAKE_DIRECTORY "${dir}")
    set(link "${dir}/${folder}")
    set(target "${PROJECT_SOURCE_DIR}/${folder}")
    set(current "")
    if(IS_SYMLINK "${link}")
        file(READ_SYMLINK "${link}" current)
    endif()
    if(NOT current STREQUAL target)
        file(REMOVE "${link}")
        file(CREATE_LINK "${target}" "${link}" SYMBOLIC)
    endif()
    set(${out} "${dir}" PARENT_SCOPE)
endfunction()
