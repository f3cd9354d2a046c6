# Locales that differ from the plain one in digits, grouping, letters and coding, made once with the files of
# Debian's package "locales". Tests of a locale that could not be made say so and are skipped.
find_program(LOCALEDEF localedef)
foreach(locale IN ITEMS tr_TR.UTF-8 de_DE.UTF-8 fr_FR.UTF-8 fa_IR.UTF-8 ar_EG.UTF-8 hi_IN.UTF-8 en_IN.UTF-8 ru_RU.KOI8-R
        ja_JP.EUC-JP zh_TW.BIG5 zh_CN.GB18030)
  string(REPLACE "." ";" parts "${locale}")
  list(GET parts 0 language)
  list(GET parts 1 charset)
  set(folder "${unkind_dir}/locales/${locale}")
  add_custom_command(OUTPUT "${folder}/LC_CTYPE"
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${unkind_dir}/locales"
    COMMAND "${LOCALEDEF}" --no-archive --quiet --force -i ${language} -f ${charset} "${folder}" || true
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${folder}"
    COMMAND "${CMAKE_COMMAND}" -E touch "${folder}/LC_CTYPE"
    COMMENT "Making the locale ${locale}"
    VERBATIM)
  list(APPEND locale_files "${folder}/LC_CTYPE")
endforeach()
if(LOCALEDEF)
  add_custom_target(unkind_host_locales DEPENDS ${locale_files})
  add_dependencies(unkind_host_test unkind_host_locales)
endif()
