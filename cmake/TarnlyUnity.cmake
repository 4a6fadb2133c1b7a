# Compiles the files of a folder as one, so that what they include is parsed, and what they share is instantiated, once:
# a build that starts from nothing takes half the time. What people use, and the daily round, is compiled file by file.
if(NOT TARNLY_UNITY)
    return()
endif()
function(tarnly_unity)
    foreach(target IN LISTS ARGN)
        if(TARGET ${target})
            set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
            get_target_property(folder ${target} SOURCE_DIR)
            get_target_property(sources ${target} SOURCES)
            foreach(source IN LISTS sources)
                cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY ${folder})
                cmake_path(RELATIVE_PATH source BASE_DIRECTORY ${PROJECT_SOURCE_DIR} OUTPUT_VARIABLE place)
                cmake_path(GET place PARENT_PATH place)
                if(place MATCHES "^(Sources|Tests)/") # what the build has made stands alone
                    string(MAKE_C_IDENTIFIER "${place}" group)
                    set_source_files_properties(${source} TARGET_DIRECTORY ${target} PROPERTIES UNITY_GROUP ${group})
                endif()
            endforeach()
        endif()
    endforeach()
endfunction()
tarnly_unity(
    tarnly_platform_tests tarnly_core_tests tarnly_xplane_tests tarnly_app_tests tarnly_desktop_tests
    tarnly_simulator_tests tarnly_client_tests tarnly_track_tests)
if(TARNLY_UNITY STREQUAL "all")
    tarnly_unity(
        tarnly_platform tarnly_core tarnly_xplane tarnly_app tarnly_desktop tarnly_simulator tarnly_client
        tarnly_track tarnly_trial tarnly_track_commands tarnly_navdb)
endif()
