# Warnings and sanitizers that every target of this project is built with.
add_library(vorn_warnings INTERFACE)
target_compile_options(vorn_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
target_compile_definitions(vorn_warnings INTERFACE QT_NO_CAST_TO_ASCII QT_NO_FOREACH
    QT_DISABLE_DEPRECATED_BEFORE=0x060400)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND VORN_SANITIZE)
    # GCC's flow warnings misfire on instrumented code; the plain builds still check them.
    target_compile_options(vorn_warnings INTERFACE -Wno-maybe-uninitialized)
endif()

if(VORN_SANITIZE)
    add_compile_options(-fsanitize=${VORN_SANITIZE} -fno-omit-frame-pointer -g)
    if(VORN_SANITIZE MATCHES "undefined")
        add_compile_options(-fno-sanitize-recover=undefined)
    endif()
    add_link_options(-fsanitize=${VORN_SANITIZE})
endif()
