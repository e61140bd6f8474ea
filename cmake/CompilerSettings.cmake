# Warnings are per target so that nothing leaks into code we do not own.
function(pyx_compiler_settings target)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual)
    target_compile_definitions(${target} PRIVATE QT_NO_URL_CAST_FROM_STRING QT_USE_QSTRINGBUILDER)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "SHARED_LIBRARY" OR type STREQUAL "MODULE_LIBRARY")
        target_link_options(${target} PRIVATE -Wl,--no-undefined)
    endif()
endfunction()

# Product code spells out every conversion between bytes and text.
function(pyx_strict_strings target)
    target_compile_definitions(${target} PRIVATE QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII)
endfunction()

# A framework library: shared, hidden by default, with an export header of its own.
function(pyx_framework_library target)
    cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC_LIBS" ${ARGN})
    add_library(${target} SHARED ${ARG_SOURCES})
    pyx_compiler_settings(${target})
    pyx_strict_strings(${target})
    string(REPLACE "-" "_" base ${target})
    generate_export_header(${target} BASE_NAME ${base})
    target_include_directories(${target} PUBLIC
        $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}>
        $<BUILD_INTERFACE:${CMAKE_CURRENT_BINARY_DIR}>)
    target_link_libraries(${target} PUBLIC ${ARG_PUBLIC_LIBS})
    set_target_properties(${target} PROPERTIES
        VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
        LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
endfunction()
