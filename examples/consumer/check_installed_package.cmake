# Installs a build of the libraries into a fresh prefix and proves that programs build against
# the installed files alone: the consumer project through find_package, the same example through
# pkg-config. Each program's output must equal that of the example built in the source tree; the
# package, orvsdk.pc and (for a whole build) the installed tool must report the same version. Run with cmake -P and these variables:
#   SOURCE_DIR   the source tree
#   WORK_DIR     a folder of its own (prefix and consumer builds are made anew each run)
#   LINKAGE      static or shared
#   BUILD_DIR    a configured build of SOURCE_DIR with that linkage; when empty, the libraries
#                are configured and built in WORK_DIR (library targets only)
#   REFERENCE    the in-tree example program
#   CXX_COMPILER, CXX_LAUNCHER, GENERATOR: the tools of the build that runs the check
cmake_minimum_required(VERSION 3.25)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE lStatus OUTPUT_VARIABLE lOutput ERROR_VARIABLE lOutput)
  if(NOT lStatus EQUAL 0)
    message(FATAL_ERROR "failed (${lStatus}): ${ARGN}\n${lOutput}")
  endif()
endfunction()

# Runs pProgram on the sample and fails unless it prints what the in-tree example prints.
function(expect_reference_output pProgram)
  set(lArguments ${SOURCE_DIR}/examples/walker.asf ${SOURCE_DIR}/examples/walker.amc)
  execute_process(COMMAND ${REFERENCE} ${lArguments} OUTPUT_VARIABLE lExpected COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND ${pProgram} ${lArguments} OUTPUT_VARIABLE lActual RESULT_VARIABLE lStatus)
  if(NOT lStatus EQUAL 0 OR NOT lActual STREQUAL lExpected OR lExpected STREQUAL "")
    message(FATAL_ERROR "${pProgram} printed\n${lActual}(status ${lStatus}); the in-tree example printed\n${lExpected}")
  endif()
  message(STATUS "${pProgram}: ${lActual}")
endfunction()

set(lPrefix ${WORK_DIR}/prefix)
file(REMOVE_RECURSE ${lPrefix} ${WORK_DIR}/consumer ${WORK_DIR}/pkgconfig)
file(MAKE_DIRECTORY ${WORK_DIR}/pkgconfig)
set(lTools -G ${GENERATOR} -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_BUILD_TYPE=Release)
if(CXX_LAUNCHER)
  list(APPEND lTools -DCMAKE_CXX_COMPILER_LAUNCHER=${CXX_LAUNCHER})
endif()

if(BUILD_DIR)
  run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${lPrefix})
else()
  set(lShared OFF)
  if(LINKAGE STREQUAL "shared")
    set(lShared ON)
  endif()
  set(lLibraryBuild ${WORK_DIR}/libraries)
  run(${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${lLibraryBuild} ${lTools} -DBUILD_SHARED_LIBS=${lShared}
      -DORV_BUILD_TESTS=OFF)
  run(${CMAKE_COMMAND} --build ${lLibraryBuild} --target orvdriver -j2)
  run(${CMAKE_COMMAND} --install ${lLibraryBuild} --prefix ${lPrefix} --component libraries)
endif()

# find_package: the consumer project, and a request for a version the package does not satisfy.
execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR}/examples/consumer -B ${WORK_DIR}/consumer ${lTools}
                        -DCMAKE_PREFIX_PATH=${lPrefix} OUTPUT_VARIABLE lConfigureOutput COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCH "Found orvsdk ([0-9.]+)" lFound "${lConfigureOutput}")
set(lPackageVersion ${CMAKE_MATCH_1})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/consumer)
expect_reference_output(${WORK_DIR}/consumer/minimal_import)
execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR}/examples/consumer -B ${WORK_DIR}/consumer-future ${lTools}
                -DCMAKE_PREFIX_PATH=${lPrefix} -DORVSDK_REQUIRED_VERSION=99.0
                RESULT_VARIABLE lStatus OUTPUT_QUIET ERROR_VARIABLE lError)
file(REMOVE_RECURSE ${WORK_DIR}/consumer-future)
if(lStatus EQUAL 0 OR NOT lError MATCHES "requested[ \n]+version[ \n]+\"99\\.0\"")
  message(FATAL_ERROR "find_package(orvsdk 99.0) did not refuse the installed package:\n${lError}")
endif()

# pkg-config: the same example compiled by hand with the flags orvsdk.pc gives.
file(GLOB_RECURSE lPcFile ${lPrefix}/*/orvsdk.pc)
cmake_path(GET lPcFile PARENT_PATH lPcDir)
set(ENV{PKG_CONFIG_PATH} ${lPcDir})
execute_process(COMMAND pkg-config --cflags --libs orvsdk OUTPUT_VARIABLE lFlags COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(lFlags UNIX_COMMAND "${lFlags}")
set(lProgram ${WORK_DIR}/pkgconfig/minimal_import)
set(lRunPath)
if(LINKAGE STREQUAL "shared")
  cmake_path(GET lPcDir PARENT_PATH lLibDir)
  set(lRunPath -Wl,-rpath,${lLibDir})
endif()
run(${CXX_COMPILER} -std=c++17 ${SOURCE_DIR}/examples/minimal_import.cpp ${lFlags} ${lRunPath} -o ${lProgram})
expect_reference_output(${lProgram})

# The CMake package, orvsdk.pc and, when installed, the tool report one version.
execute_process(COMMAND pkg-config --modversion orvsdk OUTPUT_VARIABLE lPcVersion OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)
set(lToolVersion "orvasf ${lPackageVersion}")  # a libraries-only install has no tool to ask
if(BUILD_DIR)
  execute_process(COMMAND ${lPrefix}/bin/orvasf --version OUTPUT_VARIABLE lToolVersion
                  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
endif()
if(lPackageVersion STREQUAL "" OR NOT lPcVersion STREQUAL lPackageVersion
   OR NOT lToolVersion STREQUAL "orvasf ${lPackageVersion}")
  message(FATAL_ERROR "the installed files disagree about the version: package '${lPackageVersion}', "
                      "orvsdk.pc '${lPcVersion}', tool '${lToolVersion}'")
endif()

# The programs use the libraries of the installed linkage: a shared build's are loaded at run time
# from the prefix and export the public classes only; a static build's leave no run-time need.
foreach(lProgramPath ${WORK_DIR}/consumer/minimal_import ${lProgram})
  execute_process(COMMAND ldd ${lProgramPath} OUTPUT_VARIABLE lLoaded COMMAND_ERROR_IS_FATAL ANY)
  if(LINKAGE STREQUAL "shared" AND NOT lLoaded MATCHES "liborvdriver[^\n]*=> ${lPrefix}/")
    message(FATAL_ERROR "${lProgramPath} does not load liborvdriver from ${lPrefix}:\n${lLoaded}")
  elseif(LINKAGE STREQUAL "static" AND lLoaded MATCHES "liborv")
    message(FATAL_ERROR "${lProgramPath} loads shared orvsdk libraries:\n${lLoaded}")
  endif()
endforeach()
