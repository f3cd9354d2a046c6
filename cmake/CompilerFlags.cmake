set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
                    -Wnon-virtual-dtor -Woverloaded-virtual -Wformat=2 -Wundef -Werror)
add_compile_options(-fstack-protector-strong -fno-plt)
add_link_options(-Wl,--as-needed -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
include_directories("${CMAKE_SOURCE_DIR}")

if(ZORBALT_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
elseif(CMAKE_BUILD_TYPE MATCHES "Rel")
  add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
endif()
# What the fuzzer learns from; comparisons are left out, which cost more than the dictionary leaves to learn.
if(ZORBALT_FUZZ)
  add_compile_options(-fsanitize-coverage=inline-8bit-counters,pc-table)
endif()
