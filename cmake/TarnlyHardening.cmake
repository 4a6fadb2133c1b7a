# What makes a mistake in memory end the program instead of handing it to whoever found it. All code that we compile
# has it, third-party code too; debug builds do without, and builds with a sanitizer have that instead.
if(CMAKE_BUILD_TYPE STREQUAL "Debug" OR TARNLY_SANITIZE)
    return()
endif()
include(CheckCXXCompilerFlag)
include(CheckPIESupported)

check_pie_supported()
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
add_compile_definitions(_GLIBCXX_ASSERTIONS)
add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fstack-protector-strong)

# Where the processor, and the compiler for it, have them.
set(CMAKE_REQUIRED_FLAGS -Werror)
foreach(flag IN ITEMS -fstack-clash-protection -fcf-protection)
    string(MAKE_C_IDENTIFIER tarnly_has${flag} found)
    check_cxx_compiler_flag(${flag} ${found})
    if(${found})
        add_compile_options(${flag})
    endif()
endforeach()
unset(CMAKE_REQUIRED_FLAGS)
