# The build tree has the shape of an installation, so that it runs without being installed:
#   bin/ the command, lib/ and include/ the framework, cim/ the module and the conversion library, vdksim/ the
#   simulator, libexec/ what the command runs.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/archive")
set(ZORBALT_CIM_DIR "${CMAKE_BINARY_DIR}/cim")
set(ZORBALT_VDKSIM_DIR "${CMAKE_BINARY_DIR}/vdksim")
set(ZORBALT_LIBEXEC_DIR "${CMAKE_BINARY_DIR}/libexec")

# Every folder is one step below the root, wherever the root is moved to.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN/../lib")

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
