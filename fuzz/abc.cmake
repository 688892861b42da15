# The code under test tells the fuzzer which of its branches an input took.
target_compile_options(model PRIVATE -fsanitize=fuzzer-no-link)
target_compile_options(ABC PRIVATE -fsanitize=fuzzer-no-link)

add_executable(fuzz_abc fuzz_abc.cpp)
target_compile_options(fuzz_abc PRIVATE -fsanitize=fuzzer)
target_link_options(fuzz_abc PRIVATE -fsanitize=fuzzer)
target_link_libraries(fuzz_abc PRIVATE ABC Qt5::Core)
