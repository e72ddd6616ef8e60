# What a program that uses the library finds it by, installed beside it: a
# pkg-config file (velmora.pc) and a CMake package (find_package(Velmora)
# with the targets Velmora::VelmoraNative and Velmora::Headers), both
# relative to where they are installed, so that any prefix works. And the
# licence and the Debian changelog under the documentation folder.
include(CMakePackageConfigHelpers)

set(velmora_pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH VELMORA_PC_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" VELMORA_PC_PREFIX "${VELMORA_PC_PREFIX}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/velmora.pc.in ${PROJECT_BINARY_DIR}/velmora.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/velmora.pc DESTINATION ${velmora_pkgconfig_dir})

set(velmora_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Velmora)
install(EXPORT VelmoraTargets NAMESPACE Velmora:: DESTINATION ${velmora_cmake_dir})
configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/VelmoraConfig.cmake.in
    ${PROJECT_BINARY_DIR}/VelmoraConfig.cmake
    INSTALL_DESTINATION ${velmora_cmake_dir}
)
write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/VelmoraConfigVersion.cmake
    COMPATIBILITY SameMajorVersion
)
install(FILES ${PROJECT_BINARY_DIR}/VelmoraConfig.cmake ${PROJECT_BINARY_DIR}/VelmoraConfigVersion.cmake DESTINATION ${velmora_cmake_dir})

# Debian's place for them, lower case whatever the project's name.
set(velmora_doc_dir ${CMAKE_INSTALL_DATAROOTDIR}/doc/velmora)
install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright DESTINATION ${velmora_doc_dir})
find_program(VELMORA_GZIP gzip REQUIRED)
add_custom_command(
    OUTPUT ${PROJECT_BINARY_DIR}/changelog.gz
    COMMAND ${VELMORA_GZIP} -9 -n -c ${PROJECT_SOURCE_DIR}/packaging/changelog > ${PROJECT_BINARY_DIR}/changelog.gz
    DEPENDS ${PROJECT_SOURCE_DIR}/packaging/changelog
)
add_custom_target(VelmoraChangelog ALL DEPENDS ${PROJECT_BINARY_DIR}/changelog.gz)
install(FILES ${PROJECT_BINARY_DIR}/changelog.gz DESTINATION ${velmora_doc_dir})
