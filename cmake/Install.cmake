# What `cmake --install` puts where. Everything is found from where the program is, so the whole may be moved.
set(plugin_folder ${CMAKE_INSTALL_LIBDIR}/picturezvk)
set(doc_folder ${CMAKE_INSTALL_DATADIR}/doc/picturezvk)
if(NOT PICTUREZVK_64BIT)
  # Beside the 64-bit plug-in, as in the build.
  install(TARGETS PictureZVK LIBRARY DESTINATION ${plugin_folder}/x86)
  return()
endif()
install(TARGETS PictureZVK LIBRARY DESTINATION ${plugin_folder})
install(TARGETS zvk RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

# The manual page and the completion scripts, as the program prints them. program_text(<file> <destination>
# <argument>...) makes and installs a file of what it prints for the arguments.
set(program_texts)
macro(program_text file destination)
  add_custom_command(OUTPUT ${file} COMMAND zvk ${ARGN} > ${file} DEPENDS zvk PictureZVK)
  list(APPEND program_texts ${PROJECT_BINARY_DIR}/${file})
  install(FILES ${PROJECT_BINARY_DIR}/${file} DESTINATION ${destination})
endmacro()
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/man ${PROJECT_BINARY_DIR}/completion/bash ${PROJECT_BINARY_DIR}/completion/zsh)
program_text(man/zvk.1 ${CMAKE_INSTALL_MANDIR}/man1 manual)
program_text(completion/bash/zvk ${CMAKE_INSTALL_DATADIR}/bash-completion/completions completion bash)
program_text(completion/zsh/_zvk ${CMAKE_INSTALL_DATADIR}/zsh/site-functions completion zsh)
add_custom_target(program_texts ALL DEPENDS ${program_texts})

# The pages, laid out as in the sources, so that their links lead somewhere. The texts that docs/reference.md is made of
# stay behind.
install(FILES README.md CHANGELOG.md LICENSE src/host/paths/LICENSE-UNICODE.txt DESTINATION ${doc_folder})
install(DIRECTORY docs examples DESTINATION ${doc_folder}
  PATTERN docs/reference EXCLUDE
  PATTERN examples/results EXCLUDE)
