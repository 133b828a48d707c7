# What `cmake --install` puts where. Three components: runtime (the program), library (what programs that
# use svmscore load) and development (what they are compiled with). An installed tree may be moved: its
# parts find each other by where they lie.
include(CMakePackageConfigHelpers)

set(packaging ${CMAKE_SOURCE_DIR}/packaging)
set(cmake_folder ${CMAKE_INSTALL_LIBDIR}/cmake/svmscore)
set(embedding_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/svmscore)

# --- Products. Libraries find libraries beside themselves, the program finds them from bin/.
file(RELATIVE_PATH libraries_from_bin ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set_target_properties(svmscore PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries_from_bin}")
set_target_properties(svmscore_c svmscore_host PROPERTIES INSTALL_RPATH "$ORIGIN")

# What users of the libraries are given: headers where they are installed, not where they are built.
set_target_properties(svmscore_c PROPERTIES
  EXPORT_NAME svmscore
  INTERFACE_INCLUDE_DIRECTORIES "$<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}/capi>")
set_target_properties(svmscore_host PROPERTIES EXPORT_NAME host)
target_include_directories(svmscore_host INTERFACE $<INSTALL_INTERFACE:${embedding_include_dir}>)
target_compile_features(svmscore_host INTERFACE cxx_std_20)

install(TARGETS svmscore RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
install(TARGETS svmscore_plugin
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/svmscore COMPONENT library)
install(TARGETS svmscore_c svmscore_host EXPORT svmscore
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

# --- Headers. Those of the host keep their paths, under a folder of their own.
install(FILES capi/svmscore.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS host/public_headers.txt)
file(STRINGS host/public_headers.txt public_headers)
foreach(header ${public_headers})
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${header} DESTINATION ${embedding_include_dir}/${folder} COMPONENT development)
endforeach()

# --- For those who link: find_package and pkg-config.
install(EXPORT svmscore NAMESPACE svmscore:: FILE svmscore-targets.cmake
  DESTINATION ${cmake_folder} COMPONENT development)
configure_package_config_file(${packaging}/svmscore-config.cmake.in svmscore-config.cmake
  INSTALL_DESTINATION ${cmake_folder} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(svmscore-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/svmscore-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/svmscore-config-version.cmake
  DESTINATION ${cmake_folder} COMPONENT development)

# The .pc files name the prefix from where they lie, so that it may move.
file(RELATIVE_PATH pc_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" pc_prefix ${pc_prefix})
file(RELATIVE_PATH pc_libdir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH pc_includedir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
foreach(package svmscore svmscore-host)
  configure_file(${packaging}/${package}.pc.in ${package}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${package}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()

# --- For those who type: the manual page, made from what the program says of itself, and completion.
if(NOT SVMSCORE_SANITIZE AND NOT CMAKE_CROSSCOMPILING)
  add_custom_command(OUTPUT svmscore.1
    COMMAND ${packaging}/make-manual $<TARGET_FILE:svmscore> svmscore.1
    DEPENDS svmscore ${packaging}/make-manual VERBATIM)
  add_custom_target(manual ALL DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/svmscore.1)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/svmscore.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT runtime)
endif()
install(FILES ${packaging}/svmscore.bash-completion RENAME svmscore
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT runtime)
