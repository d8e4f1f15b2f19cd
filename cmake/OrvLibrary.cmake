# The installed libraries: each one registered here gets an export header, hidden symbols in
# shared builds, its public headers installed under include/ in the source tree's layout, and a
# place in the exported CMake package (as orvsdk::NAME), in orvsdk::all and in orvsdk.pc.
include(GNUInstallDirs)

set(ORV_CMAKE_DIR ${CMAKE_CURRENT_LIST_DIR})

# Semantic versioning: before 1.0 a minor release may break callers, so it is part of the shared
# libraries' ABI version (and of the package's compatibility rule) until then.
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(ORV_SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  set(ORV_VERSION_COMPATIBILITY SameMinorVersion)
else()
  set(ORV_SOVERSION ${PROJECT_VERSION_MAJOR})
  set(ORV_VERSION_COMPATIBILITY SameMajorVersion)
endif()

# orv_install_library(TARGET EXPORT_NAME NAME EXPORT_MACRO MACRO EXPORT_HEADER PATH
#                     GENERATED_ROOT DIR HEADERS PATH... [GENERATED_HEADERS PATH...])
# EXPORT_HEADER (e.g. amc/OrvAmcExport.h) is generated below GENERATED_ROOT and defines MACRO,
# which marks the target's exported declarations. HEADERS are the public headers (paths relative
# to the source tree), GENERATED_HEADERS further ones the build made below GENERATED_ROOT; each
# is installed at its relative path below include/ and documented by the docs target. Register
# a library after the ones it links, so that the registration order is a valid link order.
function(orv_install_library pTarget)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "EXPORT_NAME;EXPORT_MACRO;EXPORT_HEADER;GENERATED_ROOT"
                        "HEADERS;GENERATED_HEADERS")
  string(TOUPPER "${ARG_EXPORT_HEADER}" lGuard)
  string(MAKE_C_IDENTIFIER "${lGuard}" ORV_EXPORT_GUARD)
  set(ORV_EXPORT_MACRO ${ARG_EXPORT_MACRO})
  set(ORV_EXPORT_TARGET ${pTarget})
  set(ORV_SHARED 0)
  if(BUILD_SHARED_LIBS)
    set(ORV_SHARED 1)
  endif()
  configure_file(${ORV_CMAKE_DIR}/OrvExport.h.in ${ARG_GENERATED_ROOT}/${ARG_EXPORT_HEADER} @ONLY)

  target_compile_features(${pTarget} PUBLIC cxx_std_17)
  target_include_directories(${pTarget} PUBLIC $<BUILD_INTERFACE:${ARG_GENERATED_ROOT}>
                                               $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  set_target_properties(${pTarget} PROPERTIES
    EXPORT_NAME ${ARG_EXPORT_NAME}
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    INSTALL_RPATH $ORIGIN
    VERSION ${PROJECT_VERSION}
    SOVERSION ${ORV_SOVERSION})
  add_library(orvsdk::${ARG_EXPORT_NAME} ALIAS ${pTarget})

  install(TARGETS ${pTarget} EXPORT orvsdkTargets COMPONENT libraries
          ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
          LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
          RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  orv_install_headers(${ARG_GENERATED_ROOT} ${ARG_EXPORT_HEADER})
  foreach(lHeader IN LISTS ARG_GENERATED_HEADERS)
    orv_install_headers(${ARG_GENERATED_ROOT} ${lHeader})
    list(APPEND lDocumented ${ARG_GENERATED_ROOT}/${lHeader})
  endforeach()
  foreach(lHeader IN LISTS ARG_HEADERS)
    orv_install_headers(${PROJECT_SOURCE_DIR} ${lHeader})
    list(APPEND lDocumented ${PROJECT_SOURCE_DIR}/${lHeader})
  endforeach()

  set_property(GLOBAL APPEND PROPERTY ORV_INSTALLED_LIBRARIES ${pTarget})
  set_property(GLOBAL APPEND PROPERTY ORV_PUBLIC_HEADERS ${lDocumented})
  set_property(GLOBAL APPEND PROPERTY ORV_EXPORT_MACROS ${ARG_EXPORT_MACRO})
  set_property(GLOBAL APPEND PROPERTY ORV_GENERATED_ROOTS ${ARG_GENERATED_ROOT})
endfunction()

# Installs pRoot/pHeader as include/pHeader.
function(orv_install_headers pRoot pHeader)
  cmake_path(GET pHeader PARENT_PATH lDirectory)
  install(FILES ${pRoot}/${pHeader} COMPONENT libraries DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${lDirectory})
endfunction()
