# Qt's plug-ins beside the programs. The application looks for them in the folder "plugins" beside
# its executable and nowhere else, so the build and the installation put them there.

get_target_property(plugin_file Qt5::QJpegPlugin LOCATION)
get_filename_component(plugin_folder "${plugin_file}" DIRECTORY)
get_filename_component(plugin_folder "${plugin_folder}" DIRECTORY)
if(NOT EXISTS "${plugin_folder}/imageformats/libqtiff.so")
    message(FATAL_ERROR "Qt's TIFF reader is missing in ${plugin_folder}/imageformats "
        "(Debian: qt5-image-formats-plugins)")
endif()

set(TESSERA_PLUGIN_FOLDER "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/plugins")
# What the programs use, rather than whatever this machine has: the package depends on no more.
set(plugin_names
    imageformats/libqgif.so imageformats/libqico.so imageformats/libqjpeg.so
    imageformats/libqtiff.so
    platforms/libqminimal.so platforms/libqoffscreen.so platforms/libqxcb.so
    platforminputcontexts/libcomposeplatforminputcontextplugin.so
    platforminputcontexts/libibusplatforminputcontextplugin.so)
set(copy_commands)
set(plugin_files)
foreach(name IN LISTS plugin_names)
    if(EXISTS "${plugin_folder}/${name}")
        get_filename_component(kind "${name}" DIRECTORY)
        list(APPEND plugin_files "${plugin_folder}/${name}")
        list(APPEND copy_commands
            COMMAND ${CMAKE_COMMAND} -E make_directory "${TESSERA_PLUGIN_FOLDER}/${kind}"
            COMMAND ${CMAKE_COMMAND} -E copy "${plugin_folder}/${name}"
                "${TESSERA_PLUGIN_FOLDER}/${name}")
        install(FILES "${plugin_folder}/${name}"
            DESTINATION "${TESSERA_PROGRAM_FOLDER}/plugins/${kind}")
    endif()
endforeach()
set(copied_stamp "${CMAKE_BINARY_DIR}/tessera-plugins.stamp")
add_custom_command(OUTPUT "${copied_stamp}"
    COMMAND ${CMAKE_COMMAND} -E rm -rf "${TESSERA_PLUGIN_FOLDER}"
    ${copy_commands}
    COMMAND ${CMAKE_COMMAND} -E touch "${copied_stamp}"
    DEPENDS ${plugin_files}
    COMMENT "Putting Qt's plug-ins beside the programs")
add_custom_target(TesseraQtPlugins ALL DEPENDS "${copied_stamp}")
