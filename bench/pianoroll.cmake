add_executable(bench_pianoroll bench_pianoroll.cpp)
target_link_libraries(bench_pianoroll PRIVATE pianoroll settings Qt5::Widgets)
