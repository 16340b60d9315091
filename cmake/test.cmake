# What is worth building for the thread sanitizer: the programs whose label is "threads".
add_custom_target(thread_tests)

# tern_add_test(name [BARE] LABELS ... SOURCES ... [LIBS ...])
#
# One GoogleTest program; ctest runs each of its cases under the given labels. A BARE one goes without the support
# library, whose listener takes every report.
function(tern_add_test name)
    cmake_parse_arguments(arg "BARE" "TIMEOUT" "SOURCES;LIBS;LABELS" ${ARGN})
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 300)
    endif()
    add_executable(${name} ${arg_SOURCES})
    set(support $<IF:$<BOOL:${arg_BARE}>,GTest::gtest_main,tern_test_support>)
    target_link_libraries(${name} PRIVATE tern_build_options ${support} ${arg_LIBS})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
    if("threads" IN_LIST arg_LABELS)
        add_dependencies(thread_tests ${name})
    endif()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT ${arg_TIMEOUT})
    # Labels are set when ctest reads the discovered tests: gtest_discover_tests keeps only the first of a list.
    set(labels_file ${CMAKE_CURRENT_BINARY_DIR}/${name}_labels.cmake)
    file(WRITE ${labels_file} "set_tests_properties(\${${name}_TESTS} PROPERTIES LABELS \"${arg_LABELS}\")\n")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${labels_file})
endfunction()
