# Where Wagemill is installed on Linux, and its packages: `cpack -G DEB` and `cpack -G RPM` in the build folder.
# The program and what it looks for in its own folder are in one private folder; the command is a link into it.
include(${PROJECT_SOURCE_DIR}/packaging/Files.cmake)

set(private_folder lib/wagemill)
set(document_folder share/doc/wagemill)
set(icon_sides 16 22 24 32 48 64 96 128 192 256 512)
set(generated_folder ${PROJECT_BINARY_DIR}/packaging)
string(TIMESTAMP package_date "%Y-%m-%d" UTC) # of SOURCE_DATE_EPOCH where that is set
string(TIMESTAMP package_time "%a, %d %b %Y %H:%M:%S +0000" UTC)

# install_compressed(<source> <destination> <name> <component> [EXCLUDE_FROM_ALL])
# Compresses a text as Debian asks of changelogs and manual pages: as small as it goes, without name and time.
function(install_compressed source destination name component)
    add_custom_command(OUTPUT ${generated_folder}/${name}
        COMMAND gzip -9nc ${source} > ${generated_folder}/${name}
        DEPENDS ${source} VERBATIM)
    add_custom_target(${name} ALL DEPENDS ${generated_folder}/${name})
    install(FILES ${generated_folder}/${name} DESTINATION ${destination} COMPONENT ${component} ${ARGN})
endfunction()

set(debian_revision 0wagemill1)

foreach(file wagemill.1 wagemill.desktop example.quellory.wagemill.metainfo.xml debian-changelog)
    configure_file(${CMAKE_CURRENT_LIST_DIR}/${file}.in ${generated_folder}/${file} @ONLY)
endforeach()

install(TARGETS wagemill RUNTIME DESTINATION ${private_folder} COMPONENT program)
foreach(file IN LISTS WAGEMILL_PROGRAM_FILES)
    get_filename_component(folder ${file} DIRECTORY)
    install(FILES ${PROJECT_SOURCE_DIR}/resources/${file} DESTINATION ${private_folder}/${folder} COMPONENT program)
endforeach()
file(MAKE_DIRECTORY ${generated_folder}/bin)
file(CREATE_LINK ../${private_folder}/wagemill ${generated_folder}/bin/wagemill SYMBOLIC)
install(FILES ${generated_folder}/bin/wagemill DESTINATION bin COMPONENT program)

install(FILES ${generated_folder}/wagemill.desktop DESTINATION share/applications COMPONENT program)
install(FILES ${generated_folder}/example.quellory.wagemill.metainfo.xml DESTINATION share/metainfo COMPONENT program)
foreach(side IN LISTS icon_sides)
    install(FILES ${PROJECT_SOURCE_DIR}/resources/icon/wagemill-${side}.png RENAME wagemill.png
        DESTINATION share/icons/hicolor/${side}x${side}/apps COMPONENT program)
endforeach()
install(FILES ${PROJECT_SOURCE_DIR}/resources/icon/wagemill.svg
    DESTINATION share/icons/hicolor/scalable/apps COMPONENT program)

# Debian wants the changelog compressed and the licence in a file of its own form; others take both as they are.
foreach(document IN LISTS WAGEMILL_DOCUMENTS)
    set(component program)
    if(document MATCHES "^(CHANGELOG.md|LICENSE)$")
        set(component plain)
    endif()
    install(FILES ${PROJECT_SOURCE_DIR}/${document} DESTINATION ${document_folder} COMPONENT ${component})
endforeach()
install(FILES ${WAGEMILL_MANUAL_PICTURES} DESTINATION ${document_folder}/pictures/manual COMPONENT program)
install_compressed(${generated_folder}/wagemill.1 share/man/man1 wagemill.1.gz program)
install_compressed(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${document_folder} changelog.gz debian EXCLUDE_FROM_ALL)
install_compressed(${generated_folder}/debian-changelog ${document_folder} changelog.Debian.gz debian EXCLUDE_FROM_ALL)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/lintian-overrides RENAME wagemill
    DESTINATION share/lintian/overrides COMPONENT debian EXCLUDE_FROM_ALL)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/copyright DESTINATION ${document_folder} COMPONENT debian EXCLUDE_FROM_ALL)

set(CPACK_PACKAGE_NAME wagemill)
set(CPACK_PACKAGE_VENDOR "the Wagemill authors")
set(CPACK_PACKAGE_CONTACT "Wagemill authors <support@quellory.example>")
set(CPACK_PACKAGE_HOMEPAGE_URL https://quellory.example)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "makes payroll workbooks with pay stubs")
set(CPACK_PACKAGE_DESCRIPTION_FILE ${CMAKE_CURRENT_LIST_DIR}/description.txt)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_RELOCATABLE OFF)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_LIST_DIR}/PackageParts.cmake)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# Below every revision that a package of Debian's own could have.
set(CPACK_DEBIAN_PACKAGE_RELEASE ${debian_revision})
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS fonts-liberation)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS qt6-wayland)

set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
set(CPACK_RPM_PACKAGE_LICENSE MIT)
set(CPACK_RPM_PACKAGE_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_RPM_PACKAGE_GROUP Applications/Productivity)
set(CPACK_RPM_PACKAGE_REQUIRES hicolor-icon-theme) # the owner of the icons' folders
set(CPACK_RPM_SPEC_MORE_DEFINE "%define _build_id_links none")
set(CPACK_RPM_USER_FILELIST
    "%license /usr/${document_folder}/LICENSE" "%doc /usr/${document_folder}/CHANGELOG.md"
    "%doc /usr/${document_folder}/licences.md" "%doc /usr/${document_folder}/manual.md"
    "%doc /usr/share/man/man1/wagemill.1.gz")
# Folders that belong to the system, not to this package.
set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
    /usr/share/applications /usr/share/metainfo /usr/share/man /usr/share/man/man1 /usr/share/icons
    /usr/share/icons/hicolor /usr/share/icons/hicolor/scalable /usr/share/icons/hicolor/scalable/apps)
foreach(side IN LISTS icon_sides)
    list(APPEND CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
        /usr/share/icons/hicolor/${side}x${side} /usr/share/icons/hicolor/${side}x${side}/apps)
endforeach()
include(CPack)
