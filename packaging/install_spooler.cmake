# What belongs to one spooler: included by packaging/install.cmake when RLX_SPOOLER is on.
set(spooler ${PROJECT_SOURCE_DIR}/spooler)

# ---- CUPS ----------------------------------------------------------------------------------------
list(APPEND rlx_installed_components rlx-cups)
install(TARGETS texttorlx RUNTIME DESTINATION ${RLX_CUPS_SERVERBIN}/filter COMPONENT rlx-cups)
install_manual(rlx-cups ${spooler}/texttorlx/texttorlx.8 ${spooler}/rlx-queue/rlx-queue.8)

# The script learns the version, which stands in one place.
configure_file(${spooler}/rlx-queue/rlx-queue ${PROJECT_BINARY_DIR}/rlx-queue @ONLY)
install(PROGRAMS ${PROJECT_BINARY_DIR}/rlx-queue DESTINATION ${CMAKE_INSTALL_SBINDIR}
        COMPONENT rlx-cups)

# The backend of queues to a printer application, of which CUPS chooses one by the scheme of the device.
file(RELATIVE_PATH RLX_TO_PPDS /${RLX_CUPS_SERVERBIN}/backend /${CMAKE_INSTALL_DATADIR}/rlx)
configure_file(${spooler}/rlxipp/rlxipp ${PROJECT_BINARY_DIR}/rlxipp @ONLY)
foreach(scheme IN ITEMS rlxipp rlxipps)
  install(PROGRAMS ${PROJECT_BINARY_DIR}/rlxipp DESTINATION ${RLX_CUPS_SERVERBIN}/backend
          RENAME ${scheme} COMPONENT rlx-cups)
endforeach()

# The driver file names its catalogue of translations, which has to stand beside it.
foreach(data IN ITEMS drv/rlx.drv drv/rlx-ja.po mime/rlx.types mime/rlx.convs)
  get_filename_component(name ${data} NAME)
  get_filename_component(folder ${data} DIRECTORY)
  install(FILES ${spooler}/cups/${name} DESTINATION ${RLX_CUPS_DATADIR}/${folder}
          COMPONENT rlx-cups)
endforeach()

# Several print servers behind one queue: what is said of them, and the scripts, to be copied.
install(FILES ${PROJECT_SOURCE_DIR}/docs/print-farm.md
        DESTINATION ${rlx_document_directory}/rlx-cups COMPONENT rlx-cups)
file(GLOB scripts CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/examples/print-farm/*)
install(PROGRAMS ${scripts} DESTINATION ${rlx_document_directory}/rlx-cups/examples/print-farm
        COMPONENT rlx-cups)

# The PPDs of the driver file, in the build folder's ppd/ as in the installed share/rlx/.
find_program(RLX_PPDC ppdc REQUIRED)
file(STRINGS ${spooler}/cups/rlx.drv ppd_lines REGEX "^[ \t]*PCFileName[ \t]+\"")
set(ppds)
foreach(line IN LISTS ppd_lines)
  string(REGEX REPLACE "^[^\"]*\"([^\"]*)\".*$" "\\1" name "${line}")
  string(TOLOWER "${name}" name) # as ppdc does
  list(APPEND ppds ${PROJECT_BINARY_DIR}/ppd/${name})
endforeach()
file(GLOB catalogues CONFIGURE_DEPENDS ${spooler}/cups/*.po)
add_custom_command(
  OUTPUT ${ppds}
  COMMAND ${RLX_PPDC} -d ${PROJECT_BINARY_DIR}/ppd rlx.drv
  DEPENDS ${spooler}/cups/rlx.drv ${catalogues}
  WORKING_DIRECTORY ${spooler}/cups
  COMMENT "Compiling the PPDs"
  VERBATIM)
add_custom_target(rlx_ppds ALL DEPENDS ${ppds})
install(FILES ${ppds} DESTINATION ${CMAKE_INSTALL_DATADIR}/rlx COMPONENT rlx-cups)

# ---- LPRng ---------------------------------------------------------------------------------------
list(APPEND rlx_installed_components rlx-lprng)
install(TARGETS rlx-lpd RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR} COMPONENT rlx-lprng)
install_manual(rlx-lprng ${spooler}/rlx-lpd/rlx-lpd.8)
install(FILES ${spooler}/rlx-lpd/printcap.example
        DESTINATION ${rlx_document_directory}/rlx-lprng/examples COMPONENT rlx-lprng)

# ---- The printer application ---------------------------------------------------------------------
list(APPEND rlx_installed_components rlx-printer-app)
install(TARGETS rlx-printer-app RUNTIME DESTINATION ${CMAKE_INSTALL_SBINDIR}
        COMPONENT rlx-printer-app)
file(GLOB pages CONFIGURE_DEPENDS ${spooler}/rlx-printer-app/man/*.1)
install_manual(rlx-printer-app ${pages})
install(FILES ${PROJECT_SOURCE_DIR}/docs/printer-app.md
        DESTINATION ${rlx_document_directory}/rlx-printer-app COMPONENT rlx-printer-app)
set(SYSTEM_CALLS "@system-service")
configure_file(${PROJECT_SOURCE_DIR}/packaging/systemd/rlx-printer-app.service.in
               ${PROJECT_BINARY_DIR}/rlx-printer-app.service @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/rlx-printer-app.service
        DESTINATION lib/systemd/system COMPONENT rlx-printer-app)
