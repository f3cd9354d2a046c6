# An installed server-management framework in place of the portable build: the same two targets, from its headers and
# libraries. The framework's own files keep their places; nothing of it is built or installed here.
foreach(library IN ITEMS qel_ComLib qel_ProviderBase)
  find_library(ZORBALT_${library} ${library} PATHS "${ZORBALT_FRAMEWORK_DIR}/lib" NO_DEFAULT_PATH REQUIRED)
  add_library(${library} SHARED IMPORTED GLOBAL)
  set_target_properties(${library} PROPERTIES
    IMPORTED_LOCATION "${ZORBALT_${library}}"
    IMPORTED_NO_SONAME OFF
    INTERFACE_INCLUDE_DIRECTORIES "${ZORBALT_FRAMEWORK_DIR}/include")
endforeach()
target_link_libraries(qel_ProviderBase INTERFACE qel_ComLib)
