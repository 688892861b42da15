add_executable(bench_live bench_live.cpp)
target_link_libraries(bench_live PRIVATE Sound PkgConfig::SndFile)
