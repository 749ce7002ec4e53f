# Locales whose numbers, names or letters are not those of the C locale: a program finds them in LOCPATH, which is this
# directory. Where localedef or a locale's source is missing they cannot be made, and the tests say so.
set(QUILLON_TEST_LOCALES ${PROJECT_BINARY_DIR}/locales)
find_program(LOCALEDEF localedef)
if(LOCALEDEF AND EXISTS /usr/share/i18n/locales/ps_AF AND NOT WIN32 AND NOT TARGET test_locales)
  foreach(locale de_DE fr_FR ps_AF tr_TR)
    add_custom_command(OUTPUT ${QUILLON_TEST_LOCALES}/${locale}.UTF-8
                       COMMAND ${CMAKE_COMMAND} -E make_directory ${QUILLON_TEST_LOCALES}
                       COMMAND ${LOCALEDEF} -i ${locale} -f UTF-8 ${QUILLON_TEST_LOCALES}/${locale}.UTF-8
                       VERBATIM)
    list(APPEND test_locales ${QUILLON_TEST_LOCALES}/${locale}.UTF-8)
  endforeach()
  add_custom_target(test_locales DEPENDS ${test_locales})
endif()

# quillon_use_test_locales(TARGET SOURCE): defines QUILLON_TEST_LOCALES for this source of the target and makes the
# locales first. As no other source is given a path of this clone, ccache shares their objects between clones.
function(quillon_use_test_locales target source)
  set_property(SOURCE ${source} APPEND PROPERTY COMPILE_DEFINITIONS QUILLON_TEST_LOCALES="${QUILLON_TEST_LOCALES}")
  if(TARGET test_locales)
    add_dependencies(${target} test_locales)
  endif()
endfunction()
