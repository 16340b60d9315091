# tern_add_test(name LABELS ... SOURCES ... [LIBS ...])
#
# One GoogleTest program; ctest runs each of its cases under the given labels.
function(tern_add_test name)
    cmake_parse_arguments(arg "" "TIMEOUT" "SOURCES;LIBS;LABELS" ${ARGN})
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 300)
    endif()
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE tern_build_options tern_test_support ${arg_LIBS})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
    string(REPLACE ";" "\\;" labels "${arg_LABELS}") # the list must survive one more expansion
    gtest_discover_tests(${name}
        DISCOVERY_TIMEOUT 60
        PROPERTIES LABELS "${labels}" TIMEOUT ${arg_TIMEOUT})
endfunction()
