# quillmoor_test(FOLDER CLASS LIBS lib … [SOURCES extra.cpp …])
#
# Builds tst_CLASS from tst_CLASS.cpp in the calling folder and registers it with
# ctest as FOLDER.CLASS under the label FOLDER. Tests find their files through
# QFINDTESTDATA("data/…").
function(quillmoor_test folder class)
    cmake_parse_arguments(arg "" "" "LIBS;SOURCES" ${ARGN})
    set(target "tst_${class}")
    add_executable(${target} "tst_${class}.cpp" ${arg_SOURCES})
    set_target_properties(${target} PROPERTIES AUTOMOC ON)
    target_link_libraries(${target} PRIVATE ${arg_LIBS} Qt5::Test)
    add_test(NAME "${folder}.${class}" COMMAND ${target})
    # What Qt leaks behind its windows is suppressed by names that only the slow way of unwinding
    # finds, which takes ten times as long where much is allocated.
    set(unwinding "fast_unwind_on_malloc=1")
    if(folder MATCHES "^(ui|app|icons|flow)$")
        set(unwinding "fast_unwind_on_malloc=0")
    endif()
    set_tests_properties("${folder}.${class}" PROPERTIES
        LABELS "${folder}"
        TIMEOUT ${QUILLMOOR_TEST_TIMEOUT}
        ENVIRONMENT "${QUILLMOOR_TEST_ENVIRONMENT};ASAN_OPTIONS=${unwinding}:detect_leaks=1"
        ENVIRONMENT_MODIFICATION "${QUILLMOOR_TEST_ENVIRONMENT_CHANGES}")
endfunction()

set(QUILLMOOR_TEST_TIMEOUT 300) # seconds
if(QUILLMOOR_SANITIZE)
    set(QUILLMOOR_TEST_TIMEOUT 1200)
endif()

# Nothing of the user's is read, written, shown or heard: no window, home folder, sound card or
# server. A test that wants one of them says so itself. Nor is anybody asked for a newer version:
# nothing listens at that port.
set(QUILLMOOR_TEST_ENVIRONMENT
    "QT_QPA_PLATFORM=offscreen"
    "SDL_AUDIODRIVER=dummy"
    "HOME=${CMAKE_BINARY_DIR}/tests/home"
    "QUILLMOOR_UPDATE_HOST=127.0.0.1:1"
    "XDG_RUNTIME_DIR=${CMAKE_BINARY_DIR}/tests/runtime"
    "LSAN_OPTIONS=suppressions='${CMAKE_SOURCE_DIR}/cmake/lsan.supp':print_suppressions=0"
    "UBSAN_OPTIONS=print_stacktrace=1"
    "TSAN_OPTIONS=suppressions='${CMAKE_SOURCE_DIR}/cmake/tsan.supp':halt_on_error=1")
set(QUILLMOOR_TEST_ENVIRONMENT_CHANGES
    "QUILLMOOR_SOUND=unset:"
    "QUILLMOOR_FMOD_LIBRARY=unset:"
    "QUILLMOOR_GAME=unset:"
    "DISPLAY=unset:"
    "WAYLAND_DISPLAY=unset:"
    "PULSE_SERVER=unset:"
    "PULSE_RUNTIME_PATH=unset:"
    "PIPEWIRE_REMOTE=unset:"
    "PIPEWIRE_RUNTIME_DIR=unset:"
    "XDG_DATA_HOME=unset:"
    "XDG_CONFIG_HOME=unset:")
