# The flags of our own code. Every target of ours links tarnly_options; third-party code does not.
find_package(Threads REQUIRED)

add_library(tarnly_options INTERFACE)
target_compile_options(tarnly_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -ffp-contract=off
    $<$<NOT:$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>>:-Wshadow> # what a file has is no outer scope of the next
    # What a file keeps to itself, g++ then takes for a header's.
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>>:-Wno-subobject-linkage>
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
        # Links the fuzzers and tests in a fifth of the time.
        find_program(TARNLY_LLD ld.lld-16)
        mark_as_advanced(TARNLY_LLD)
        if(TARNLY_LLD)
            add_link_options(--ld-path=${TARNLY_LLD})
        endif()
    endif()
    if(TARNLY_SANITIZE MATCHES thread AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        add_compile_options(-Wno-tsan) # Asio has fences, which this sanitizer does not follow
        # The programs are a third of the size, and reports need lines and no variables. What the sanitizer adds makes
        # g++ see variables without a value, and memory that is freed otherwise than allocated, where there are none.
        add_compile_options(-O1 -g1 -Wno-maybe-uninitialized -Wno-mismatched-new-delete)
    endif()
endif()

if(TARNLY_CCACHE)
    find_program(TARNLY_CCACHE_PROGRAM ccache)
    mark_as_advanced(TARNLY_CCACHE_PROGRAM)
    if(TARNLY_CCACHE_PROGRAM)
        set(CMAKE_CXX_COMPILER_LAUNCHER ${TARNLY_CCACHE_PROGRAM} CACHE STRING "What the compiler is started by")
    endif()
endif()
