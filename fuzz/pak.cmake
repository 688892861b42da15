add_executable(fuzz_pak fuzz_pak.cpp)
target_link_libraries(fuzz_pak PRIVATE Quillmoor Qt5::Core)
target_link_options(fuzz_pak PRIVATE -fsanitize=fuzzer)
# The fuzzer follows what it can see of the code under test.
foreach(target IN ITEMS Quillmoor fuzz_pak)
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
endforeach()
