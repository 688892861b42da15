# quillmoor_library(NAME
#     SOURCES a.cpp b.cpp      files of the folder
#     HEADERS a.h b.h          its public headers
#     PUBLIC lib …             dependencies that appear in its headers
#     PRIVATE lib …            dependencies of its .cpp files alone
#     VIEW folder)             what the folder is called in includes, if not by its name
#
# NAME is the folder's, or that of a second, smaller library in the same folder.
#
# The only include path a library offers is a view of its own folder in the
# build tree, so "ABC/ABCParser.h" compiles just where ABC is declared as a
# dependency. The target "all_verify_interface_header_sets" compiles each
# public header alone.
set(CMAKE_VERIFY_INTERFACE_HEADER_SETS ON)

function(quillmoor_library name)
    cmake_parse_arguments(arg "" "VIEW" "SOURCES;HEADERS;PUBLIC;PRIVATE" ${ARGN})

    get_filename_component(folder "${CMAKE_CURRENT_SOURCE_DIR}" NAME)
    if(arg_VIEW)
        set(folder "${arg_VIEW}")
    endif()
    set(view "${CMAKE_BINARY_DIR}/include/${name}")
    file(MAKE_DIRECTORY "${view}")
    file(CREATE_LINK "${CMAKE_CURRENT_SOURCE_DIR}" "${view}/${folder}" SYMBOLIC)

    set(publicHeaders ${arg_HEADERS})
    list(TRANSFORM publicHeaders PREPEND "${view}/${folder}/")
    # moc reads the headers where they lie; through the view it would do it twice.
    set_source_files_properties(${publicHeaders} PROPERTIES SKIP_AUTOGEN ON)

    add_library(${name} STATIC ${arg_SOURCES} ${arg_HEADERS})
    target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS "${view}" FILES ${publicHeaders})
    target_link_libraries(${name} PUBLIC ${arg_PUBLIC} PRIVATE ${arg_PRIVATE})
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
endfunction()
