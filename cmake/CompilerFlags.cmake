set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
                    -Wnon-virtual-dtor -Woverloaded-virtual -Wformat=2 -Wundef -Werror)
add_compile_options(-fstack-protector-strong -fstack-clash-protection -fno-plt)
if(CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
  add_compile_options(-fcf-protection=full)
endif()
add_link_options(-Wl,--as-needed -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)

# With its extensions the compiler saves a child's counts before exec.
if(ZORBALT_COVERAGE)
  set(CMAKE_CXX_EXTENSIONS ON)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()
if(ZORBALT_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
elseif(CMAKE_BUILD_TYPE MATCHES "Rel")
  add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 -D_GLIBCXX_ASSERTIONS)
endif()
# What the fuzzer learns from; comparisons are left out, which cost more than the dictionary leaves to learn.
if(ZORBALT_FUZZ)
  add_compile_options(-fsanitize-coverage=inline-8bit-counters,pc-table)
endif()
