# The package: the CMake config that find_package(dispc) reads, both installed
# and in the build tree, and a pkg-config file for projects that do not use CMake.
# Included from the top level when DISPC_INSTALL is on (the library targets
# must already be in the export set dispcTargets).

set(DISPC_CONFIG_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/dispc)

write_basic_package_version_file(${PROJECT_BINARY_DIR}/dispcConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)

# Installed: the config finds dispcTargets.cmake beside itself.
install(EXPORT dispcTargets NAMESPACE dispc:: DESTINATION ${DISPC_CONFIG_DESTINATION})
configure_package_config_file(cmake/dispcConfig.cmake.in
  ${PROJECT_BINARY_DIR}/install-config/dispcConfig.cmake
  INSTALL_DESTINATION ${DISPC_CONFIG_DESTINATION})
install(FILES ${PROJECT_BINARY_DIR}/install-config/dispcConfig.cmake
              ${PROJECT_BINARY_DIR}/dispcConfigVersion.cmake
        DESTINATION ${DISPC_CONFIG_DESTINATION})

# Build tree: dispc_DIR=<build dir> uses the libraries where they were built and
# the headers in the source tree. Its config gets its own prefix (the build
# dir), so a path computed from PACKAGE_PREFIX_DIR stays right in both places.
export(EXPORT dispcTargets NAMESPACE dispc:: FILE ${PROJECT_BINARY_DIR}/dispcTargets.cmake)
configure_package_config_file(cmake/dispcConfig.cmake.in
  ${PROJECT_BINARY_DIR}/dispcConfig.cmake
  INSTALL_DESTINATION ${PROJECT_BINARY_DIR}
  INSTALL_PREFIX ${PROJECT_BINARY_DIR})

# pkg-config. The prefix is found from the place of the .pc file itself, so
# the tree stays usable when installed with `cmake --install --prefix` to
# somewhere else than the configured prefix, or moved afterwards.
function(dispc_pc_dir var dir)
  if(IS_ABSOLUTE "${dir}")
    set(${var} "${dir}" PARENT_SCOPE)
  else()
    set(${var} "\${prefix}/${dir}" PARENT_SCOPE)
  endif()
endfunction()
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(DISPC_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
else()
  file(RELATIVE_PATH up "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
  string(REGEX REPLACE "/$" "" up "${up}")
  set(DISPC_PC_PREFIX "\${pcfiledir}/${up}")
endif()
dispc_pc_dir(DISPC_PC_LIBDIR "${CMAKE_INSTALL_LIBDIR}")
dispc_pc_dir(DISPC_PC_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}")
set(DISPC_PC_LIBS)
foreach(target IN ITEMS cairo imageio dispc foundation)  # users first: the link order of a static build
  get_target_property(name ${target} OUTPUT_NAME)
  string(APPEND DISPC_PC_LIBS " -l${name}")
endforeach()
configure_file(cmake/dispc.pc.in ${PROJECT_BINARY_DIR}/dispc.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/dispc.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
