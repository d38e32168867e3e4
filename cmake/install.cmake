# What `cmake --install` puts where: header, both libraries, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

install(FILES "${PROJECT_SOURCE_DIR}/include/sorvo_audio.h"
        DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development)
if(TARGET sorvo_audio)
    install(TARGETS sorvo_audio EXPORT sorvo_audio_targets
            LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime
            NAMELINK_COMPONENT development
            ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
            RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime)
endif()
if(TARGET sorvo_audio_static)
    install(TARGETS sorvo_audio_static EXPORT sorvo_audio_targets
            ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)
endif()

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/sorvo_audio")
install(EXPORT sorvo_audio_targets NAMESPACE sorvo::
        DESTINATION "${package_dir}" COMPONENT development)
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/sorvo_audio-config.cmake.in"
    "${PROJECT_BINARY_DIR}/sorvo_audio-config.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/sorvo_audio-config-version.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/sorvo_audio-config.cmake"
              "${PROJECT_BINARY_DIR}/sorvo_audio-config-version.cmake"
        DESTINATION "${package_dir}" COMPONENT development)

# The pkg-config file finds its prefix from its own place, so an installed tree may be moved.
# A program that links the static library needs the runtime too: always, if there is no other library.
if(TARGET sorvo_audio)
    set(pc_runtime_of_static "-lstdc++ -lm")
else()
    set(pc_runtime "-lstdc++ -lm")
endif()
set(pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
    BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}/${pkgconfig_dir}" OUTPUT_VARIABLE prefix_from_pc)
configure_file("${CMAKE_CURRENT_LIST_DIR}/sorvo_audio.pc.in"
    "${PROJECT_BINARY_DIR}/sorvo_audio.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/sorvo_audio.pc"
        DESTINATION "${pkgconfig_dir}" COMPONENT development)

# Debian's place of Python packages; the prefix is what the interpreter searches.
if(EXISTS "${PROJECT_SOURCE_DIR}/python/sorvo_audio")
    install(DIRECTORY "${PROJECT_SOURCE_DIR}/python/sorvo_audio"
            DESTINATION lib/python3/dist-packages COMPONENT python
            PATTERN "__pycache__" EXCLUDE)
endif()
