add_executable(bench_midi bench_midi.cpp ManyNotes.cpp)
target_link_libraries(bench_midi PRIVATE MIDI model Qt5::Core)
