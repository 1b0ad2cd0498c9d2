# Installs the hand-off library for other extensions of the host: find_package(quillet-handoff)
# brings the target Quillet::handoff. The install component is "handoff".
include(CMakePackageConfigHelpers)

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/quillet-handoff")
set(package_targets handoff model util extension dates url plist files base session desktop options)
list(TRANSFORM package_targets PREPEND quillet_ OUTPUT_VARIABLE package_libraries)
foreach(name IN LISTS package_targets)
    set_target_properties(quillet_${name} PROPERTIES EXPORT_NAME ${name})
endforeach()

install(TARGETS ${package_libraries} EXPORT quillet-handoff
        ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT handoff
        FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/quillet" COMPONENT handoff)
install(EXPORT quillet-handoff NAMESPACE Quillet:: FILE quillet-handoff-targets.cmake
        DESTINATION "${package_folder}" COMPONENT handoff)

set(package_config "${CMAKE_CURRENT_BINARY_DIR}/quillet-handoff-config.cmake")
set(package_version "${CMAKE_CURRENT_BINARY_DIR}/quillet-handoff-config-version.cmake")
configure_package_config_file(cmake/quillet-handoff-config.cmake.in "${package_config}"
                              INSTALL_DESTINATION "${package_folder}")
write_basic_package_version_file("${package_version}" COMPATIBILITY SameMinorVersion)
install(FILES "${package_config}" "${package_version}"
        DESTINATION "${package_folder}" COMPONENT handoff)

# Extensions may still include the platform's headers from platform/foundation, the folder that all
# of them had before.
set(old_folder "${CMAKE_CURRENT_BINARY_DIR}/foundation")
foreach(folder IN ITEMS base extension plist url)
    get_target_property(headers quillet_${folder} HEADER_SET)
    foreach(header IN LISTS headers)
        cmake_path(GET header FILENAME name)
        file(CONFIGURE OUTPUT "${old_folder}/${name}"
             CONTENT "#pragma once\n\n#include \"platform/${folder}/${name}\"\n")
    endforeach()
endforeach()
install(DIRECTORY "${old_folder}" COMPONENT handoff
        DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/quillet/platform")
