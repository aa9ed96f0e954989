# Uses a dispc build the way another project would. ctest runs one step per test:
#   cmake -DSTEP=<step> -DDISPC_BUILD_DIR=<dispc build> -DSCRATCH=<dir> ... -P check.cmake
# Steps:
#   install     installs the build into SCRATCH/install (emptied first)
#   cmake       builds and runs this folder's project against that install,
#               found through CMAKE_PREFIX_PATH
#   pkgconfig   compiles main.cpp with what `pkg-config --cflags --libs dispc`
#               gives for that install (with --static for a static build,
#               STATIC=1), and runs it
#   build-tree  builds and runs this folder's project against the build itself
#               (dispc_DIR=DISPC_BUILD_DIR), nothing installed
# The other -D values describe the dispc build: CONFIG, LIBDIR (its
# CMAKE_INSTALL_LIBDIR), VERSION, GENERATOR, MAKE_PROGRAM, CXX, CXX_FLAGS and
# LINK_FLAGS (space-separated, for the consumer too), PKG_CONFIG.
cmake_minimum_required(VERSION 3.25)

set(prefix ${SCRATCH}/install)
# An empty CONFIG (no CMAKE_BUILD_TYPE) means the generator's default.
set(config)
set(ctest_config)
if(CONFIG)
  set(config --config ${CONFIG})
  set(ctest_config -C ${CONFIG})
endif()

# Runs a command and stops the check when it fails.
function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ECHO STDOUT RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "failed (${result})")
  endif()
endfunction()

# Configures, builds and runs the consumer project in a fresh folder; fails
# unless find_package(dispc) took the config from expected_dir.
function(consumer dir expected_dir)
  file(REMOVE_RECURSE ${dir})
  run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${dir} -G ${GENERATOR}
      -DCMAKE_MAKE_PROGRAM=${MAKE_PROGRAM} -DCMAKE_BUILD_TYPE=${CONFIG}
      -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_CXX_FLAGS=${CXX_FLAGS}
      -DCMAKE_EXE_LINKER_FLAGS=${LINK_FLAGS} ${ARGN})
  # A dispc installed elsewhere on the machine must not stand in for this one.
  file(STRINGS ${dir}/CMakeCache.txt found REGEX "^dispc_DIR:")
  string(REGEX REPLACE "^[^=]*=" "" found "${found}")
  file(REAL_PATH "${found}" found)
  file(REAL_PATH "${expected_dir}" expected_dir)
  if(NOT found STREQUAL expected_dir)
    message(FATAL_ERROR "find_package(dispc) used ${found}, not ${expected_dir}")
  endif()
  run(${CMAKE_COMMAND} --build ${dir} ${config})
  run(${CMAKE_CTEST_COMMAND} --test-dir ${dir} ${ctest_config} --output-on-failure --no-tests=error)
endfunction()

if(STEP STREQUAL "install")
  file(REMOVE_RECURSE ${prefix})
  run(${CMAKE_COMMAND} --install ${DISPC_BUILD_DIR} ${config} --prefix ${prefix})
  file(GLOB_RECURSE private_headers RELATIVE ${prefix} ${prefix}/*_p.h)
  if(private_headers)
    message(FATAL_ERROR "private headers installed: ${private_headers}")
  endif()

elseif(STEP STREQUAL "cmake")
  consumer(${SCRATCH}/cmake ${prefix}/${LIBDIR}/cmake/dispc -DCMAKE_PREFIX_PATH=${prefix})

elseif(STEP STREQUAL "build-tree")
  consumer(${SCRATCH}/build-tree ${DISPC_BUILD_DIR} -Ddispc_DIR=${DISPC_BUILD_DIR})

elseif(STEP STREQUAL "pkgconfig")
  # Only the scratch install is searched.
  set(ENV{PKG_CONFIG_LIBDIR} ${prefix}/${LIBDIR}/pkgconfig)
  unset(ENV{PKG_CONFIG_PATH})
  run(${PKG_CONFIG} --print-errors --exact-version=${VERSION} dispc)
  foreach(query IN ITEMS cflags libs libdir)
    set(option --${query})
    if(query STREQUAL "libdir")
      set(option --variable=libdir)
    endif()
    # Static archives bring their libraries' own link lines (Libs.private).
    if(query STREQUAL "libs" AND STATIC)
      list(APPEND option --static)
    endif()
    execute_process(COMMAND ${PKG_CONFIG} ${option} dispc OUTPUT_VARIABLE ${query}
                    OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(${query} UNIX_COMMAND "${${query}}")
  endforeach()
  # A .pc file that names its configured prefix instead of its own place would
  # point at /usr/local here.
  file(REAL_PATH "${libdir}" libdir_real)
  file(REAL_PATH "${prefix}/${LIBDIR}" expected_libdir)
  if(NOT libdir_real STREQUAL expected_libdir)
    message(FATAL_ERROR "dispc.pc gives libdir ${libdir}, not ${prefix}/${LIBDIR}")
  endif()
  separate_arguments(compile_flags UNIX_COMMAND "${CXX_FLAGS}")
  separate_arguments(link_flags UNIX_COMMAND "${LINK_FLAGS}")
  set(dir ${SCRATCH}/pkgconfig)
  file(REMOVE_RECURSE ${dir})
  file(MAKE_DIRECTORY ${dir})
  # The rpath stands in for the loader path a user would set for a shared build.
  run(${CXX} ${compile_flags} -Wall -Wextra -Werror ${cflags} "-DDISPC_EXPECTED_VERSION=\"${VERSION}\""
      ${CMAKE_CURRENT_LIST_DIR}/main.cpp -o ${dir}/package_test ${link_flags} ${libs}
      -Wl,-rpath,${libdir})
  run(${dir}/package_test)

else()
  message(FATAL_ERROR "unknown STEP '${STEP}'")
endif()
