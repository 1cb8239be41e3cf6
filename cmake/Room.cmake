# vorn_room(NAME SOURCES ... [LINK ...]): the static library of one room (vorn_NAME). Headers are
# included by their path from the src/: #include "platform/MainQueue.h".
function(vorn_room name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINK;PRIVATE_LINK" ${ARGN})
    add_library(vorn_${name} STATIC ${ARG_SOURCES})
    target_include_directories(vorn_${name} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src> $<INSTALL_INTERFACE:include/vorn>)
    target_link_libraries(vorn_${name} PUBLIC ${ARG_LINK})
    target_link_libraries(vorn_${name} PRIVATE $<BUILD_INTERFACE:vorn_warnings> ${ARG_PRIVATE_LINK})
endfunction()
