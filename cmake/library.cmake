# tern_library_options(target BUILDING macro): what every library of the project is built with.
function(tern_library_options target)
    cmake_parse_arguments(arg "" "BUILDING" "" ${ARGN})
    set_target_properties(${target} PROPERTIES
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        POSITION_INDEPENDENT_CODE ON)
    target_compile_features(${target} PUBLIC cxx_std_20)
    target_compile_definitions(${target} PRIVATE ${arg_BUILDING})
    target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:tern_build_options>)
endfunction()

# tern_add_library(name BUILDING macro SOURCES ... HEADERS ... [PUBLIC libs...] [PRIVATE libs...])
#
# One storey of the house: the shared library libtern_<name> with the alias tern::<name>, hidden visibility, and
# HEADERS as its installed headers, included by their path from INCLUDE_ROOT.
function(tern_add_library name)
    cmake_parse_arguments(arg "" "BUILDING;INCLUDE_ROOT" "SOURCES;HEADERS;PUBLIC;PRIVATE" ${ARGN})
    set(target tern_${name})
    add_library(${target} SHARED ${arg_SOURCES})
    add_library(tern::${name} ALIAS ${target})
    tern_library_options(${target} BUILDING ${arg_BUILDING})
    set_target_properties(${target} PROPERTIES
        EXPORT_NAME ${name}
        INSTALL_RPATH "$ORIGIN" # the libraries stand side by side, wherever that is
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
    target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS ${arg_INCLUDE_ROOT} FILES ${arg_HEADERS})
    target_link_libraries(${target} PUBLIC ${arg_PUBLIC} PRIVATE ${arg_PRIVATE})
    install(TARGETS ${target} EXPORT tern_commonTargets
        FILE_SET HEADERS DESTINATION ${TERN_COMMON_INSTALL_INCLUDEDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
endfunction()

set(TERN_COMMON_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/tern)
