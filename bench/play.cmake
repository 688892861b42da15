add_executable(bench_play bench_play.cpp Score.cpp TimedOutput.cpp VorbisTone.cpp)
target_link_libraries(bench_play PRIVATE model Player Quillmoor Sound PkgConfig::SndFile
    Qt5::Core Threads::Threads)
