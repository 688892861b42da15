# quillmoor_library(NAME
#     SOURCES a.cpp b.cpp      files of the folder
#     HEADERS a.h b.h          its public headers
#     PUBLIC lib …             dependencies that appear in its headers
#     PRIVATE lib …            dependencies of its .cpp files alone
#     VIEW folder)             what the folder is called in includes, if not by its path
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

    file(RELATIVE_PATH folder "${CMAKE_SOURCE_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}")
    if(arg_VIEW)
        set(folder "${arg_VIEW}")
    endif()
    set(view "${CMAKE_BINARY_DIR}/include/${name}")
    get_filename_component(parent "${view}/${folder}" DIRECTORY)
    file(MAKE_DIRECTORY "${parent}")
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

# quillmoor_forms(NAME): for a library whose folder has .ui files. What is made of them is included
# like a header of the folder, "ui/dialogs/ui_KeyDialog.h".
function(quillmoor_forms name)
    set_target_properties(${name} PROPERTIES
        AUTOUIC ON
        AUTOUIC_SEARCH_PATHS "${CMAKE_SOURCE_DIR}")

    # A build knows what a source includes from the time before the forms are compiled: without
    # this it would take a changed form only the second time.
    file(GLOB forms CONFIGURE_DEPENDS *.ui)
    foreach(form IN LISTS forms)
        get_filename_component(class "${form}" NAME_WE)
        set_source_files_properties("${class}.cpp" PROPERTIES OBJECT_DEPENDS "${form}")
    endforeach()
endfunction()
