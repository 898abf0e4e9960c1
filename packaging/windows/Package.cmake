# What is installed on Windows: everything beside the program, in one folder. `cpack` in the build folder makes a zip of it.
include(${PROJECT_SOURCE_DIR}/packaging/Files.cmake)

set(generated_folder ${PROJECT_BINARY_DIR}/packaging)

install(TARGETS wagemill RUNTIME DESTINATION . COMPONENT program)
foreach(file IN LISTS WAGEMILL_PROGRAM_FILES)
    get_filename_component(folder ${file} DIRECTORY)
    install(FILES ${PROJECT_SOURCE_DIR}/resources/${file} DESTINATION ./${folder} COMPONENT program)
endforeach()

# Texts end their lines as Windows does; documents are pages for a browser where there is a tool that makes them.
foreach(file README.txt "Wagemill without Excel.cmd" "Wagemill for 25 employees.cmd")
    configure_file(${CMAKE_CURRENT_LIST_DIR}/${file} ${generated_folder}/${file} @ONLY NEWLINE_STYLE WIN32)
    install(FILES ${generated_folder}/${file} DESTINATION . COMPONENT program)
endforeach()
find_program(CMARK_GFM cmark-gfm)
find_package(Python3 COMPONENTS Interpreter)
foreach(document IN LISTS WAGEMILL_DOCUMENTS)
    get_filename_component(name ${document} NAME_WE)
    set(source ${PROJECT_SOURCE_DIR}/${document})
    if(NOT document MATCHES "\\.md$")
        configure_file(${source} ${generated_folder}/${name}.txt COPYONLY)
        list(APPEND windows_documents ${generated_folder}/${name}.txt)
    elseif(CMARK_GFM AND Python3_FOUND)
        add_custom_command(OUTPUT ${generated_folder}/${name}.html
            COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/make_html.py ${source} ${generated_folder}/${name}.html
            DEPENDS ${source} ${CMAKE_CURRENT_LIST_DIR}/make_html.py VERBATIM)
        list(APPEND windows_documents ${generated_folder}/${name}.html)
    else()
        list(APPEND windows_documents ${source})
    endif()
endforeach()
add_custom_target(documents ALL DEPENDS ${windows_documents})
install(FILES ${windows_documents} DESTINATION documents COMPONENT program)
install(FILES ${WAGEMILL_MANUAL_PICTURES} DESTINATION documents/pictures/manual COMPONENT program)
# Qt is linked statically, so its terms come along; Debian keeps the texts here.
foreach(licence LGPL-3 GPL-3)
    if(EXISTS /usr/share/common-licenses/${licence})
        install(FILES /usr/share/common-licenses/${licence} DESTINATION documents/licences RENAME ${licence}.txt
            COMPONENT program)
    endif()
endforeach()

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME wagemill-${PROJECT_VERSION}-windows-x64)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL program)
set(CPACK_ARCHIVE_COMPONENT_INSTALL OFF)
include(CPack)
