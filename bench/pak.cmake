pkg_check_modules(Sqlite IMPORTED_TARGET sqlite3)

add_executable(bench_pak bench_pak.cpp)
target_link_libraries(bench_pak PRIVATE Quillmoor Qt5::Core)
if(Sqlite_FOUND)
    target_link_libraries(bench_pak PRIVATE PkgConfig::Sqlite)
    target_compile_definitions(bench_pak PRIVATE HAVE_SQLITE)
endif()
