# Defines the kinds of targets: one library per folder, one test program per folder.

add_library(quillet_options INTERFACE)
target_compile_options(quillet_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
    $<$<BOOL:${QUILLET_WARNINGS_AS_ERRORS}>:-Werror>)
# Where the sources of a target are one, none of them is the main one, so the compiler takes what a
# file keeps to itself for part of a header.
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(quillet_options INTERFACE -Wno-subobject-linkage)
endif()
if(QUILLET_SANITIZE)
    target_compile_options(quillet_options INTERFACE
        -fsanitize=${QUILLET_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(quillet_options INTERFACE -fsanitize=${QUILLET_SANITIZE})
endif()

# quillet_library(NAME SOURCES file… [HEADERS file…] [PUBLIC lib…] [PRIVATE lib…])
# Makes a static library of one folder below src/. Paths in #include lines start at src/. HEADERS
# are installed with the library.
function(quillet_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;HEADERS;PUBLIC;PRIVATE" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_include_directories(${name} PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>")
    target_compile_features(${name} PUBLIC cxx_std_20)
    target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}/src"
                   FILES ${ARG_HEADERS})
    target_link_libraries(${name} PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE} quillet_options)
endfunction()

# Sets what a target needs if its sources use Qt.
function(quillet_uses_qt name)
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
    target_compile_definitions(${name} PRIVATE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII)
endfunction()

# quillet_test(NAME LABEL label SOURCES file… LINK lib… [BUS])
# Makes a GoogleTest program. Each of its tests becomes a test of ctest. With BUS each test runs on
# a session bus of its own.
function(quillet_test name)
    cmake_parse_arguments(ARG "BUS" "LABEL" "SOURCES;LINK" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LINK} quillet_test_support quillet_options)
    # Optimising the tests would double the time to compile them. The code under test is optimised
    # as usual.
    target_compile_options(${name} PRIVATE -O0)
    set(launcher "")
    if(ARG_BUS)
        set(launcher dbus-run-session --)
        target_compile_definitions(${name} PRIVATE QUILLET_TEST_HAS_BUS)
    endif()
    set_target_properties(${name} PROPERTIES TEST_LAUNCHER "${launcher}"
                          CROSSCOMPILING_EMULATOR "${launcher}")
    gtest_discover_tests(${name} NO_PRETTY_VALUES DISCOVERY_TIMEOUT 60
                         PROPERTIES LABELS "${ARG_LABEL}" TIMEOUT 300)
endfunction()
