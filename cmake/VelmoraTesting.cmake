# velmora_add_tests(<name> SOURCES <files...> [LIBRARIES <targets...>] [LABELS <labels...>] [SERIAL]
#                   [PROPERTIES <name> <value>...])
#
# One GoogleTest executable whose tests CTest lists one by one. Concurrency
# tests go in an executable labelled "concurrency": the ThreadSanitizer run of
# the test command selects them by that label. SERIAL tests run alone, for
# those that share something process-wide such as the display's pointer.
# PROPERTIES are further CTest properties of every test, such as a fixture.
function(velmora_add_tests name)
    cmake_parse_arguments(ARG "SERIAL" "" "SOURCES;LIBRARIES;LABELS;PROPERTIES" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} GTest::gmock GTest::gtest GTest::gtest_main VelmoraWarnings)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
    set(properties TIMEOUT 600)
    if(ARG_SERIAL)
        list(APPEND properties RUN_SERIAL TRUE)
    endif()
    if(ARG_LABELS)
        list(APPEND properties LABELS "${ARG_LABELS}")
    endif()
    list(APPEND properties ${ARG_PROPERTIES})
    # Listed when the tests run, not at build time, so that a sanitizer build
    # does not run every binary twice.
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES ${properties})
endfunction()
