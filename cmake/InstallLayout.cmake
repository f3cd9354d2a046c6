# Where an installation has what, below its prefix. The framework looks for all that it loads below one folder, its
# install root; programs look for what they run beside themselves. In a prefix of its own, such as /usr/local/zorbalt, the
# root is the prefix. In a prefix that others share, such as /usr, the root is a folder of its own; what people, other
# programs and the administrator look for lies where they look, and links join the two:
#   cmake --preset release -DCMAKE_INSTALL_PREFIX=/usr -DZORBALT_INSTALL_ROOT=lib/mngsrvraid
set(ZORBALT_INSTALL_ROOT "" CACHE STRING "The framework's install root below the prefix; empty: the prefix itself")

if(ZORBALT_INSTALL_ROOT)
  set(root "${ZORBALT_INSTALL_ROOT}/")
else()
  set(root "")
endif()
set(ZORBALT_PROGRAMS "${root}bin")
set(ZORBALT_LIBRARIES "${root}lib")
set(ZORBALT_CIM "${root}cim")
set(ZORBALT_LIBEXEC "${root}libexec")
set(ZORBALT_SIMULATOR "${root}vdksim")
set(ZORBALT_DOCUMENTS share/doc/mngsrvraid)
if(ZORBALT_INSTALL_ROOT)
  set(ZORBALT_HEADERS include/mngsrvraid)
  set(ZORBALT_SCENARIOS share/mngsrvraid)
  set(ZORBALT_SERVICE sbin/mngsrvraidd)
  set(ZORBALT_SETTINGS /etc/mngsrvraid)
  set(ZORBALT_TMP /var/cache/mngsrvraid)
else()
  set(ZORBALT_HEADERS include)
  set(ZORBALT_SCENARIOS vdksim)
  set(ZORBALT_SERVICE bin/mngsrvraidd)
  set(ZORBALT_TMP tmp)
endif()

# install_link(TARGET LINK): the link below the prefix, the target too where it is no full path
function(install_link target link)
  cmake_path(GET link PARENT_PATH folder)
  if(NOT IS_ABSOLUTE "${target}")
    file(RELATIVE_PATH target "/${folder}" "/${target}")
  endif()
  install(CODE "
    set(link \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${link}\")
    message(STATUS \"Installing: \${link}\")
    file(MAKE_DIRECTORY \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${folder}\")
    file(CREATE_LINK \"${target}\" \"\${link}\" SYMBOLIC)
    list(APPEND CMAKE_INSTALL_MANIFEST_FILES \"\${CMAKE_INSTALL_PREFIX}/${link}\")")
endfunction()

# install_links(): what leads from the root to where things lie, and from there to the root
function(install_links)
  if(ZORBALT_INSTALL_ROOT)
    install_link("${ZORBALT_PROGRAMS}/mngsrvraid" bin/mngsrvraid)
    install_link("${ZORBALT_PROGRAMS}/mngsrvraidd" "${ZORBALT_SERVICE}")
    install_link("${ZORBALT_HEADERS}" "${root}include")
    install_link("${ZORBALT_SCENARIOS}/scenarios" "${ZORBALT_SIMULATOR}/scenarios")
    install(DIRECTORY DESTINATION "${ZORBALT_SETTINGS}")
    install_link("${ZORBALT_TMP}" "${root}tmp")
    install_link("${ZORBALT_SETTINGS}" "${root}etc")
  endif()
endfunction()
