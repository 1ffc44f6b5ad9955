# `cmake --install build` puts the filter where the spooler looks for its filters, the programs
# around it beside the system's, the manual pages and documents beside the others, and what belongs
# to one spooler where that one looks for it.
#
# The components are the packages of packaging/packages.cmake: zqeuctorlx, rlx-tools, rlx-cups,
# rlx-lprng, rlx-printer-app. What a site makes itself (forms, the environment file, the range of user-defined
# characters) is never installed: the sample forms go to a folder where no filter looks.
set(rlx_document_directory ${CMAKE_INSTALL_DATAROOTDIR}/doc)
set(rlx_installed_components zqeuctorlx)

# install_manual(COMPONENT PAGE...): pages, each in the section that its name ends in. Packages have
# them compressed.
function(install_manual component)
  foreach(page IN LISTS ARGN)
    get_filename_component(name ${page} NAME)
    string(REGEX MATCH "[0-9]$" section ${name})
    set(file ${page})
    if(RLX_PACKAGES)
      set(file ${PROJECT_BINARY_DIR}/man/${name}.gz)
      add_compressed(${page} ${file})
    endif()
    install(FILES ${file} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT ${component})
  endforeach()
endfunction()

# add_compressed(FILE RESULT): made when the project is built; the same bytes each time.
function(add_compressed file result)
  get_filename_component(directory ${result} DIRECTORY)
  get_filename_component(name ${result} NAME)
  file(MAKE_DIRECTORY ${directory})
  add_custom_command(
    OUTPUT ${result}
    COMMAND gzip -9nc ${file} > ${result}
    DEPENDS ${file}
    COMMENT "Compressing ${name}"
    VERBATIM)
  string(MAKE_C_IDENTIFIER "${result}" target)
  add_custom_target(compressed_${target} ALL DEPENDS ${result})
endfunction()

# ---- The filter ----------------------------------------------------------------------------------
install(TARGETS zqeuctorlx RUNTIME DESTINATION ${RLX_FILTER_DIRECTORY} COMPONENT zqeuctorlx)
file(GLOB rlx_manual_pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/packaging/man/*.[1-8])
install_manual(zqeuctorlx ${rlx_manual_pages})
foreach(document IN ITEMS line-printer-stream.md operating.md rlx.md)
  install(FILES ${PROJECT_SOURCE_DIR}/docs/${document}
          DESTINATION ${rlx_document_directory}/zqeuctorlx COMPONENT zqeuctorlx)
endforeach()

# ---- The programs around the filter, which the users call ----------------------------------------
if(RLX_TOOLS)
  list(APPEND rlx_installed_components rlx-tools)
  # From the folder of the program to that of the filter.
  target_compile_definitions(rlxproof_core PRIVATE RLX_FILTER_DIRECTORY="${RLX_FILTER_DIRECTORY}")
  foreach(tool IN ITEMS fcbcheck rlxdump rlxproof)
    install(TARGETS ${tool} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT rlx-tools)
    install_manual(rlx-tools ${PROJECT_SOURCE_DIR}/tools/${tool}/${tool}.1)
  endforeach()
  # Samples, for people and for `-p` of a try; a site's own forms stand elsewhere.
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/forms/fcbe
          DESTINATION ${CMAKE_INSTALL_DATADIR}/rlx/forms COMPONENT rlx-tools
          FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endif()

# ---- Spoolers ------------------------------------------------------------------------------------
if(RLX_SPOOLER)
  include(packaging/install_spooler.cmake)
endif()

if(RLX_PACKAGES)
  include(packaging/packages.cmake)
endif()
