# dispc_add_library(<name> DIRS <dir>... [DEPS <target>...])
# Makes the library dispc::<name> from the sources of the given folders: C++20,
# warnings as errors, the repository root as include root, headers installed
# beside each other as they are in the tree. Headers ending in _p.h stay private.
function(dispc_add_library name)
  cmake_parse_arguments(ARG "" "" "DIRS;DEPS" ${ARGN})
  set(sources)
  set(headers)
  foreach(dir IN LISTS ARG_DIRS)
    file(GLOB dir_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${dir}/*.cpp)
    file(GLOB dir_headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${dir}/*.h)
    list(FILTER dir_headers EXCLUDE REGEX "_p\\.h$")
    list(APPEND sources ${dir_sources})
    list(APPEND headers ${dir_headers})
  endforeach()
  add_library(${name} ${sources})
  add_library(dispc::${name} ALIAS ${name})
  # Installed libraries find each other in their own folder.
  set_target_properties(${name} PROPERTIES OUTPUT_NAME dispc_${name} VERSION ${PROJECT_VERSION}
                                           SOVERSION ${PROJECT_VERSION_MAJOR} INSTALL_RPATH "\$ORIGIN")
  target_compile_features(${name} PUBLIC cxx_std_20)
  # Calls within the library bind to its own functions, so they can be inlined.
  # No fused multiply-adds, whatever the target: the same arithmetic, and the
  # same pels, on every machine and build.
  target_compile_options(${name} PRIVATE -fno-semantic-interposition -ffp-contract=off)
  dispc_warnings(${name})
  target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
                                            $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  if(ARG_DEPS)
    target_link_libraries(${name} PUBLIC ${ARG_DEPS})
  endif()
  if(DISPC_INSTALL)
    foreach(header IN LISTS headers)
      file(RELATIVE_PATH rel ${PROJECT_SOURCE_DIR} ${header})
      get_filename_component(rel_dir ${rel} DIRECTORY)
      install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${rel_dir})
    endforeach()
    install(TARGETS ${name} EXPORT dispcTargets
            LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
            ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
            RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  endif()
endfunction()

function(dispc_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Werror)
endfunction()
