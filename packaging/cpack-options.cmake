# Read by cpack at its start. The packages carry the time of the last commit, or of the changelog where
# there is no git, so that the same sources give the same packages.
get_filename_component(source ${CMAKE_CURRENT_LIST_DIR} DIRECTORY)
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
    execute_process(COMMAND git log -1 --format=%ct WORKING_DIRECTORY ${source}
        OUTPUT_VARIABLE time OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    if(NOT time)
        file(TIMESTAMP ${source}/CHANGELOG.md time %s UTC)
    endif()
    set(ENV{SOURCE_DATE_EPOCH} ${time})
endif()
