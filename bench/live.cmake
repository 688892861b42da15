add_executable(bench_live bench_live.cpp VorbisTone.cpp)
target_link_libraries(bench_live PRIVATE Sound PkgConfig::SndFile)
