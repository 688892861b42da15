add_executable(bench_abc bench_abc.cpp)
target_link_libraries(bench_abc PRIVATE ABC Qt5::Core)
