# The rules that every target of the project follows: language, warnings, arithmetic, sanitizers.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
# Where the programs go when installed, with Qt's plug-ins beside them. The folder bin has links.
set(TESSERA_PROGRAM_FOLDER lib/tessera)

add_library(TesseraOptions INTERFACE)
# Results are compared bit for bit with independent computations, so the compiler must not fuse or
# reorder floating point operations.
target_compile_options(TesseraOptions INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align
    -ffp-contract=off -fno-fast-math
    $<$<BOOL:${TESSERA_WARNINGS_AS_ERRORS}>:-Werror>)
target_compile_definitions(TesseraOptions INTERFACE
    QT_NO_CAST_TO_ASCII QT_NO_FOREACH QT_DEPRECATED_WARNINGS
    TESSERA_VERSION="${PROJECT_VERSION}")
if(TESSERA_SANITIZERS)
    # -O1, for tests too: with -O2 the compiler takes twice the time over what the sanitizers add.
    target_compile_options(TesseraOptions INTERFACE -O1 -g1
        -fsanitize=${TESSERA_SANITIZERS} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(TesseraOptions INTERFACE -fsanitize=${TESSERA_SANITIZERS})
endif()

# tessera_library(NAME SOURCES ... LIBRARIES ...): a static library whose headers are included by
# their bare name from its own source folders.
function(tessera_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES;INCLUDES" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES AUTOMOC ON AUTORCC OFF)
    target_include_directories(${name} PUBLIC ${ARG_INCLUDES})
    target_link_libraries(${name} PUBLIC TesseraOptions ${ARG_LIBRARIES})
endfunction()

# tessera_program(NAME SOURCES ... LIBRARIES ...): an executable in the folder bin of the build.
function(tessera_program name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
    target_link_libraries(${name} PRIVATE TesseraOptions ${ARG_LIBRARIES})
endfunction()

# tessera_install_program(NAME): puts the program in place, and a link to it into bin.
function(tessera_install_program name)
    install(TARGETS ${name} DESTINATION "${TESSERA_PROGRAM_FOLDER}")
    set(link "${CMAKE_BINARY_DIR}/links/${name}")
    file(MAKE_DIRECTORY "${CMAKE_BINARY_DIR}/links")
    file(CREATE_LINK "../${TESSERA_PROGRAM_FOLDER}/${name}" "${link}" SYMBOLIC)
    install(FILES "${link}" DESTINATION bin)
endfunction()

# tessera_test(NAME SOURCES ... LIBRARIES ... [TIMEOUT seconds]): one test program, one entry of
# ctest. The program runs in a folder of its own and finds a settings and a store folder of its own
# there, so that tests can run side by side.
function(tessera_test name)
    tessera_test_entry(${name} "" "offscreen" GTest::gtest_main ${ARGN})
endfunction()

# tessera_gui_test(...): the same for tests of widgets. They run on a virtual X server of their own,
# and their main function makes the QApplication.
function(tessera_gui_test name)
    tessera_test_entry(${name} "${CMAKE_SOURCE_DIR}/scripts/with-display.sh" "xcb" GuiTestSupport
        ${ARGN})
endfunction()

function(tessera_test_entry name launcher platform main_library)
    cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LIBRARIES;ENVIRONMENT" ${ARGN})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 600)
    endif()
    add_executable(${name} ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES
        AUTOMOC ON RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
    target_link_libraries(${name} PRIVATE
        TesseraOptions ${ARG_LIBRARIES} ${main_library} GTest::gmock GTest::gtest)
    if(NOT TESSERA_SANITIZERS)
        # What they test is in the libraries; optimising the tests themselves took most of the build.
        target_compile_options(${name} PRIVATE "$<$<CONFIG:RelWithDebInfo>:-O0;-g1>")
    endif()
    set(folder "${CMAKE_BINARY_DIR}/tests/${name}.run")
    file(MAKE_DIRECTORY "${folder}")
    add_test(NAME "${TESSERA_TEST_PREFIX}${name}" COMMAND ${launcher} "$<TARGET_FILE:${name}>"
        WORKING_DIRECTORY "${folder}")
    set_tests_properties("${TESSERA_TEST_PREFIX}${name}" PROPERTIES
        TIMEOUT ${ARG_TIMEOUT}
        ENVIRONMENT "HOME=${folder};XDG_CONFIG_HOME=${folder}/config;XDG_DATA_HOME=${folder}/data;TESSERA_STORE=${folder}/store;QT_QPA_PLATFORM=${platform};LC_ALL=C.UTF-8;TSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/cmake/thread-sanitizer.supp halt_on_error=1 second_deadlock_stack=1;LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/cmake/leak-sanitizer.supp:print_suppressions=0;UBSAN_OPTIONS=print_stacktrace=1;${ARG_ENVIRONMENT}")
endfunction()
