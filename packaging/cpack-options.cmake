# Read by cpack at its start. The packages carry the time of the last commit, so that the same
# sources give the same packages.
get_filename_component(source ${CMAKE_CURRENT_LIST_DIR} DIRECTORY)
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
    execute_process(COMMAND git log -1 --format=%ct WORKING_DIRECTORY ${source}
        OUTPUT_VARIABLE time OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    set(ENV{SOURCE_DATE_EPOCH} ${time})
endif()
