# Links a program so that it starts quickly and without looking for libraries: for programs that stand in for others,
# are run inside a private view of the file system, or with somebody else's library path.
include(CheckCXXSourceCompiles)

function(link_statically target)
  set(CMAKE_REQUIRED_LINK_OPTIONS -static-pie)
  check_cxx_source_compiles("#include <string>\nint main() { return std::string().size() != 0; }"
                            ZORBALT_CAN_LINK_STATIC)
  if(ZORBALT_CAN_LINK_STATIC)
    target_link_options(${target} PRIVATE -static-pie)
    # With a path to libraries that it does not need, such a program dies before it begins.
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "")
  else()
    target_link_options(${target} PRIVATE -static-libstdc++ -static-libgcc)
  endif()
endfunction()

# The same where no sanitizer stands in the way.
function(link_self_contained target)
  if(NOT ZORBALT_SANITIZE)
    link_statically(${target})
  endif()
endfunction()
