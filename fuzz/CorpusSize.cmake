# Says how large the corpora are and fails where they are larger than the tree is to hold.
#   cmake [-D CORPORA=FOLDER] -P fuzz/CorpusSize.cmake
set(most_inputs 700)
set(most_bytes 1000000)

if(NOT DEFINED CORPORA)
  set(CORPORA "${CMAKE_CURRENT_LIST_DIR}/corpus")
endif()
get_filename_component(CORPORA "${CORPORA}" ABSOLUTE)
file(GLOB_RECURSE inputs "${CORPORA}/*/*")
list(LENGTH inputs count)
set(bytes 0)
foreach(input IN LISTS inputs)
  file(SIZE "${input}" size)
  math(EXPR bytes "${bytes} + ${size}")
endforeach()

message(STATUS "The corpora hold ${count} inputs of ${bytes} bytes; at most ${most_inputs} of ${most_bytes} may be.")
if(count EQUAL 0 OR count GREATER most_inputs OR bytes GREATER most_bytes)
  message(FATAL_ERROR "That is too much, or nothing; scripts/fuzz.sh --merge makes them as few and small as it can.")
endif()
