find_package(Boost 1.81 REQUIRED CONFIG) # its headers alone: nothing of ours links its libraries
find_package(ICU REQUIRED COMPONENTS uc i18n)
find_package(PkgConfig REQUIRED)
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    pkg_check_modules(AVAHI_CLIENT REQUIRED IMPORTED_TARGET avahi-client)
endif()
find_package(SQLite3 REQUIRED)
find_package(CLI11 REQUIRED)

# Asio and Beast compiled once: their headers alone cost seconds in every file that includes them.
add_library(tarnly_asio STATIC ${CMAKE_CURRENT_LIST_DIR}/asio.cpp)
target_compile_definitions(tarnly_asio PUBLIC
    BOOST_ASIO_SEPARATE_COMPILATION
    BOOST_BEAST_SEPARATE_COMPILATION
    BOOST_ASIO_NO_DEPRECATED)
target_link_libraries(tarnly_asio PUBLIC Boost::headers Threads::Threads)

# Boost.JSON compiled in: the programs then need no library with a release of Boost in its name. Where nothing is
# optimized it would parse several times slower than the system's own does, and nobody debugs it here.
add_library(tarnly_json STATIC ${CMAKE_CURRENT_LIST_DIR}/json.cpp)
target_compile_options(tarnly_json PRIVATE $<$<CONFIG:Debug>:-O2>)
target_link_libraries(tarnly_json PUBLIC Boost::headers)
