# Instrumented trees (make check-asan, make fuzz) are separate build folders with one of these on.
option(PYX_SANITIZE "Build every target with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)
option(PYX_FUZZ "Build the libFuzzer targets of fuzz/ (needs clang)" OFF)
if(PYX_FUZZ AND NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "PYX_FUZZ needs clang: configure with -DCMAKE_CXX_COMPILER=clang++")
endif()
# Undefined behaviour must fail the run, not scroll past in a log.
set(PYX_SANITIZER_OPTIONS)
if(PYX_SANITIZE)
    set(PYX_SANITIZER_OPTIONS -fsanitize=address,undefined)
elseif(PYX_FUZZ)
    set(PYX_SANITIZER_OPTIONS -fsanitize=fuzzer-no-link,address,undefined)
endif()
if(PYX_SANITIZER_OPTIONS)
    list(APPEND PYX_SANITIZER_OPTIONS -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
endif()

# Warnings are per target so that nothing leaks into code we do not own.
function(pyx_compiler_settings target)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual)
    target_compile_definitions(${target} PRIVATE QT_NO_URL_CAST_FROM_STRING QT_USE_QSTRINGBUILDER)
    get_target_property(type ${target} TYPE)
    if(PYX_SANITIZER_OPTIONS)
        target_compile_options(${target} PRIVATE ${PYX_SANITIZER_OPTIONS})
        if(NOT type STREQUAL "OBJECT_LIBRARY")
            target_link_options(${target} PRIVATE ${PYX_SANITIZER_OPTIONS})
        endif()
    endif()
    # clang leaves the sanitizer runtime to the executable, so its libraries keep those
    # symbols undefined until then.
    if((type STREQUAL "SHARED_LIBRARY" OR type STREQUAL "MODULE_LIBRARY") AND
       NOT (PYX_SANITIZER_OPTIONS AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang"))
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
