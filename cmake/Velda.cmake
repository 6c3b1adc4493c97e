# What every target of the tree shares: warnings, sanitizers, and the two ways of declaring a target.

add_library(velda_options INTERFACE)
target_include_directories(velda_options INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(velda_options INTERFACE -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual
                       -Wunused-result -Wold-style-cast -Wcast-align)
target_compile_definitions(velda_options INTERFACE QT_DEPRECATED_WARNINGS QT_NO_CAST_TO_ASCII)
# What is delivered holds no path of the machine that built it.
target_compile_options(velda_options INTERFACE $<$<CONFIG:Release>:-ffile-prefix-map=${CMAKE_SOURCE_DIR}/=>)
# For the few that say it: a new version then compiles these alone.
set(VELDA_VERSION_DEFINITION VELDA_VERSION="${PROJECT_VERSION}")
if(VELDA_WERROR)
    target_compile_options(velda_options INTERFACE -Werror)
endif()
if(VELDA_SANITIZE)
    target_compile_options(velda_options INTERFACE -fsanitize=${VELDA_SANITIZE} -fno-omit-frame-pointer
                           -fno-sanitize-recover=all)
    target_link_options(velda_options INTERFACE -fsanitize=${VELDA_SANITIZE})
endif()
if(VELDA_COVERAGE)
    target_compile_options(velda_options INTERFACE --coverage -fprofile-update=atomic)
    target_link_options(velda_options INTERFACE --coverage)
endif()

# velda_library(NAME BUT file... ALSO file... LIBS lib...): a static library from all .cpp and .h files of the calling
# folder that are no tests.
function(velda_library name)
    cmake_parse_arguments(ARG "" "" "BUT;ALSO;LIBS" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} *.cpp *.h)
    list(FILTER sources EXCLUDE REGEX "^tst_")
    list(REMOVE_ITEM sources ${ARG_BUT})
    add_library(${name} STATIC ${sources} ${ARG_ALSO})
    target_link_libraries(${name} PUBLIC velda_options ${ARG_LIBS})
endfunction()

# velda_program(NAME SOURCES file... LIBS lib...): a program in bin/ of the build folder.
function(velda_program name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE velda_options ${ARG_LIBS})
    target_compile_definitions(${name} PRIVATE ${VELDA_VERSION_DEFINITION})
endfunction()

# What every test that starts a program of the tree runs in.
set(VELDA_TEST_ENVIRONMENT
    "QT_QPA_PLATFORM=offscreen;ASAN_OPTIONS=detect_leaks=1:abort_on_error=0;LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/lsan.supp:print_suppressions=0;TSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/tsan.supp:history_size=4:ignore_noninstrumented_modules=1;UBSAN_OPTIONS=print_stacktrace=1")

# velda_tests(LIBS lib...): one test program for each tst_*.cpp of the calling folder, named after it and run offscreen.
function(velda_tests)
    cmake_parse_arguments(ARG "" "TIMEOUT" "LIBS" ${ARGN})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    math(EXPR timeout "${ARG_TIMEOUT} * ${VELDA_TEST_PATIENCE}")
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/tst_*.cpp)
    foreach(source ${sources})
        get_filename_component(name ${source} NAME_WE)
        add_executable(${name} ${source})
        set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
        target_link_libraries(${name} PRIVATE velda_test_support ${ARG_LIBS})
        target_compile_definitions(${name} PRIVATE ${VELDA_VERSION_DEFINITION})
        add_test(NAME ${name} COMMAND ${name})
        set_tests_properties(${name} PROPERTIES TIMEOUT ${timeout} ENVIRONMENT
            "${VELDA_TEST_ENVIRONMENT};VELDA_TEST_PATIENCE=${VELDA_TEST_PATIENCE}")
    endforeach()
endfunction()
