# A room is a folder with one target. What others may include is below its include/, in a folder named after the
# room ("calls/Inquiry.h"), and comes with the target; what it keeps to itself stands beside its sources ("Grid.h").
# So an include against the arrows of the README's table finds no header.

# room_library(TARGET SOURCE...): a static library that shows what is below include/, if anything.
function(room_library target)
  add_library(${target} STATIC ${ARGN})
  if(IS_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}/include")
    target_include_directories(${target} PUBLIC include)
  endif()
  note_room(${target})
endfunction()

# note_room(TARGET): this folder is a room, and this is its target.
function(note_room target)
  cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY "${PROJECT_SOURCE_DIR}" OUTPUT_VARIABLE folder)
  set_property(GLOBAL APPEND_STRING PROPERTY ZORBALT_ROOMS
    "${folder}=$<TARGET_PROPERTY:${target},INCLUDE_DIRECTORIES>\n")
endfunction()

# write_rooms(FILE): a line a room, "product/views=DIRECTORY;DIRECTORY": where its sources find headers.
function(write_rooms file)
  get_property(rooms GLOBAL PROPERTY ZORBALT_ROOMS)
  file(GENERATE OUTPUT "${file}" CONTENT "${rooms}")
endfunction()

# look_into(TARGET ROOM...): for tests, fuzzers and benchmarks, which see what the rooms' targets keep to themselves.
function(look_into target)
  foreach(room IN LISTS ARGN)
    get_target_property(folder ${room} SOURCE_DIR)
    target_include_directories(${target} PRIVATE "${folder}")
  endforeach()
  target_link_libraries(${target} PRIVATE ${ARGN})
endfunction()
