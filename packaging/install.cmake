# `cmake --install build` puts the filter where the spooler looks for its filters, the programs
# around it beside the system's, and the manual pages beside the others.

install(TARGETS zqeuctorlx RUNTIME DESTINATION "${RLX_FILTER_DIRECTORY}")
install(FILES ${PROJECT_SOURCE_DIR}/packaging/zqeuctorlx.8 DESTINATION "${CMAKE_INSTALL_MANDIR}/man8")

# The programs around the filter, which the users call.
if(RLX_TOOLS)
  # From the folder of the program to that of the filter.
  target_compile_definitions(rlxproof_core PRIVATE RLX_FILTER_DIRECTORY="${RLX_FILTER_DIRECTORY}")
  foreach(tool IN ITEMS fcbcheck rlxdump rlxproof)
    install(TARGETS ${tool} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
    install(FILES ${PROJECT_SOURCE_DIR}/tools/${tool}/${tool}.1
            DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
  endforeach()
endif()
