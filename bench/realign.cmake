add_executable(bench_realign bench_realign.cpp)
target_link_libraries(bench_realign PRIVATE MIDI Qt5::Core)
