# The package for Windows, `cpack` in the build folder: a zip to unpack anywhere, with all files beside the program.
include(${PROJECT_SOURCE_DIR}/packaging/Files.cmake)

install(TARGETS wagemill RUNTIME DESTINATION . COMPONENT program)
foreach(file IN LISTS WAGEMILL_PROGRAM_FILES)
    get_filename_component(folder ${file} DIRECTORY)
    install(FILES ${PROJECT_SOURCE_DIR}/resources/${file} DESTINATION ./${folder} COMPONENT program)
endforeach()
foreach(document IN LISTS WAGEMILL_DOCUMENTS)
    install(FILES ${PROJECT_SOURCE_DIR}/${document} DESTINATION documents COMPONENT program)
endforeach()
install(FILES ${WAGEMILL_MANUAL_PICTURES} DESTINATION documents/pictures/manual COMPONENT program)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/README.txt DESTINATION . COMPONENT program)
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
