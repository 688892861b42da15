add_executable(bench_settings bench_settings.cpp)
target_link_libraries(bench_settings PRIVATE settings Qt5::Core Qt5::Gui)
