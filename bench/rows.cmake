add_executable(bench_rows bench_rows.cpp)
target_link_libraries(bench_rows PRIVATE tracks icons Quillmoor settings model Qt5::Widgets)
