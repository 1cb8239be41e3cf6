# Compiler, C library and linker hardening, each flag only where it is supported. A sanitizer
# build goes without: the sanitizers bring checks of their own, and some of these hide faults from them.
# packaging/check-hardening.sh reads from the packed programs whether they have it.
if(NOT VORN_SANITIZE)
    include(CheckPIESupported)
    check_pie_supported(LANGUAGES CXX)
    include(CheckCXXCompilerFlag)
    set(CMAKE_REQUIRED_FLAGS -Werror) # clang only warns of a flag for another processor
    # The last two are for x86 and for arm64.
    foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection
            -mbranch-protection=standard)
        string(MAKE_C_IDENTIFIER "VORN_HAS${flag}" has_flag)
        check_cxx_compiler_flag(${flag} ${has_flag})
        if(${has_flag})
            add_compile_options(${flag})
        endif()
    endforeach()
    unset(CMAKE_REQUIRED_FLAGS)
    add_compile_definitions(_GLIBCXX_ASSERTIONS)
    # The C library warns of it without optimization.
    add_compile_options($<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE>
        $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-D_FORTIFY_SOURCE=2>)
    add_link_options(-Wl,-z,relro,-z,now,-z,noexecstack)
endif()
