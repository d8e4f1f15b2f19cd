# The exported CMake package, orvsdk::all and the pkg-config file, made from the libraries that
# orv_install_library registered. Called once, after every library is registered.
include(CMakePackageConfigHelpers)

function(orv_install_package)
  get_property(lLibraries GLOBAL PROPERTY ORV_INSTALLED_LIBRARIES)

  add_library(orvsdk_all INTERFACE)
  target_link_libraries(orvsdk_all INTERFACE ${lLibraries})
  set_target_properties(orvsdk_all PROPERTIES EXPORT_NAME all)
  add_library(orvsdk::all ALIAS orvsdk_all)
  install(TARGETS orvsdk_all EXPORT orvsdkTargets COMPONENT libraries)

  set(lPackageDir ${CMAKE_INSTALL_LIBDIR}/cmake/orvsdk)
  install(EXPORT orvsdkTargets NAMESPACE orvsdk:: DESTINATION ${lPackageDir} COMPONENT libraries)
  configure_package_config_file(${ORV_CMAKE_DIR}/orvsdkConfig.cmake.in ${PROJECT_BINARY_DIR}/orvsdkConfig.cmake
                                INSTALL_DESTINATION ${lPackageDir})
  write_basic_package_version_file(${PROJECT_BINARY_DIR}/orvsdkConfigVersion.cmake
                                   COMPATIBILITY ${ORV_VERSION_COMPATIBILITY})
  install(FILES ${PROJECT_BINARY_DIR}/orvsdkConfig.cmake ${PROJECT_BINARY_DIR}/orvsdkConfigVersion.cmake
          DESTINATION ${lPackageDir} COMPONENT libraries)

  # Libraries in reverse registration order, each before the ones it links, as static linking
  # needs, then the threads library the AMC reader uses. The prefix is found from the file's own place, so the installed tree can move.
  list(REVERSE lLibraries)
  list(TRANSFORM lLibraries PREPEND -l OUTPUT_VARIABLE lLinkFlags)
  if(NOT BUILD_SHARED_LIBS)
    list(APPEND lLinkFlags -pthread)  # static libraries leave their own dependencies to the program
  endif()
  list(JOIN lLinkFlags " " ORV_PC_LIBS)
  file(RELATIVE_PATH ORV_PC_PREFIX_FROM_PCFILEDIR /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "/$" "" ORV_PC_PREFIX_FROM_PCFILEDIR "${ORV_PC_PREFIX_FROM_PCFILEDIR}")
  configure_file(${ORV_CMAKE_DIR}/orvsdk.pc.in ${PROJECT_BINARY_DIR}/orvsdk.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/orvsdk.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT libraries)
endfunction()
