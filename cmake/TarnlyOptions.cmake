# The flags of our own code. Every target of ours links tarnly_options; third-party code does not.
find_package(Threads REQUIRED)

add_library(tarnly_options INTERFACE)
target_compile_options(tarnly_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -ffp-contract=off
    $<$<BOOL:${TARNLY_WERROR}>:-Werror>
    # Optimizing, g++ 12 takes "x" + std::string for overlapping memory (GCC bug 105329).
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
target_include_directories(tarnly_options INTERFACE ${PROJECT_SOURCE_DIR}/Sources)
# The programs talk with the network: the table of the libraries' functions is written once, at the start.
target_link_options(tarnly_options INTERFACE LINKER:-z,relro,-z,now)
target_compile_definitions(tarnly_options INTERFACE
    TARNLY_VERSION="${PROJECT_VERSION}"
    $<$<OR:$<CONFIG:Debug>,$<BOOL:${TARNLY_LOOP_WATCH}>>:TARNLY_LOOP_WATCH>)
target_link_libraries(tarnly_options INTERFACE Threads::Threads)

if(TARNLY_SANITIZE)
    # Third-party code that we compile ourselves is instrumented too, so that the sanitizer sees both sides.
    add_compile_options(-fsanitize=${TARNLY_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${TARNLY_SANITIZE})
    if(TARNLY_SANITIZE MATCHES undefined)
        # It opens a pipe to look at an object, and takes running out of descriptors for a broken one.
        add_compile_options(-fno-sanitize=vptr)
    endif()
    if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
        # Its reports need lines, and no variables, which take a tenth of the time to compile.
        add_compile_options(-gline-tables-only)
    endif()
    if(TARNLY_SANITIZE MATCHES thread AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        add_compile_options(-Wno-tsan) # Asio has fences, which this sanitizer does not follow
        # Compiles no slower, and the programs are a third of the size. What the sanitizer adds makes g++ see variables
        # without a value, and memory that is freed otherwise than allocated, where there are none.
        add_compile_options(-O1 -Wno-maybe-uninitialized -Wno-mismatched-new-delete)
    endif()
endif()

if(TARNLY_CCACHE)
    find_program(TARNLY_CCACHE_PROGRAM ccache)
    mark_as_advanced(TARNLY_CCACHE_PROGRAM)
    if(TARNLY_CCACHE_PROGRAM)
        if(TARNLY_PRECOMPILE) # which ccache leaves alone unless told so
            set(launcher ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${TARNLY_CCACHE_PROGRAM})
        else()
            set(launcher ${TARNLY_CCACHE_PROGRAM})
        endif()
        set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher} CACHE STRING "What the compiler is started by")
    endif()
endif()
