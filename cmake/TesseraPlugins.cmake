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
set(copy_commands)
foreach(kind imageformats platforms platforminputcontexts xcbglintegrations)
    if(EXISTS "${plugin_folder}/${kind}")
        list(APPEND copy_commands COMMAND ${CMAKE_COMMAND} -E copy_directory
            "${plugin_folder}/${kind}" "${TESSERA_PLUGIN_FOLDER}/${kind}")
        install(DIRECTORY "${plugin_folder}/${kind}" DESTINATION "${TESSERA_PROGRAM_FOLDER}/plugins")
    endif()
endforeach()
file(GLOB plugin_files "${plugin_folder}/imageformats/*.so" "${plugin_folder}/platforms/*.so")
set(copied_stamp "${CMAKE_BINARY_DIR}/tessera-plugins.stamp")
add_custom_command(OUTPUT "${copied_stamp}"
    ${copy_commands}
    COMMAND ${CMAKE_COMMAND} -E touch "${copied_stamp}"
    DEPENDS ${plugin_files}
    COMMENT "Putting Qt's plug-ins beside the programs")
add_custom_target(TesseraQtPlugins ALL DEPENDS "${copied_stamp}")
