add_executable(bench_editor bench_editor.cpp)
target_link_libraries(bench_editor PRIVATE editor Qt5::Widgets)
