# What makes the program a Windows one: no console, and icon, version and manifest in its resources.
set_target_properties(wagemill PROPERTIES WIN32_EXECUTABLE ON)
target_link_options(wagemill PRIVATE -Wl,--stack,8388608) # bytes, as on Linux: formulas may nest deeply
configure_file(wagemill.manifest.in wagemill.manifest @ONLY)
configure_file(wagemill.rc.in wagemill.rc @ONLY)
target_sources(wagemill PRIVATE SystemLibraries.cpp ${CMAKE_CURRENT_BINARY_DIR}/wagemill.rc)
set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/wagemill.rc PROPERTIES
    OBJECT_DEPENDS "${CMAKE_CURRENT_BINARY_DIR}/wagemill.manifest;${PROJECT_SOURCE_DIR}/resources/icon/wagemill.ico")

find_package(Python3 COMPONENTS Interpreter)
if(Python3_FOUND AND CMAKE_NM)
    target_link_options(wagemill PRIVATE -Wl,--undefined=wagemillLoadConfiguration)
    add_custom_command(TARGET wagemill POST_BUILD VERBATIM
        COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/set_load_configuration.py $<TARGET_FILE:wagemill> ${CMAKE_NM})
endif()
