add_executable(bench_render bench_render.cpp Score.cpp)
target_link_libraries(bench_render PRIVATE ABC demo model Quillmoor Render Qt5::Gui)
