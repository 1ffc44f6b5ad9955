# `cmake --install build` puts the filter where the spooler looks for its filters, the programs around
# it where the users look for theirs, and the manual pages beside the others. All folders are relative
# to the prefix.
include(GNUInstallDirs)
set(RLX_FILTER_DIRECTORY "${CMAKE_INSTALL_LIBEXECDIR}" CACHE STRING
    "Folder of the spooler's filters, relative to the prefix")

install(TARGETS zqeuctorlx RUNTIME DESTINATION "${RLX_FILTER_DIRECTORY}")
install(FILES ${PROJECT_SOURCE_DIR}/packaging/zqeuctorlx.8 DESTINATION "${CMAKE_INSTALL_MANDIR}/man8")

if(TARGET rlxdump)
  install(TARGETS rlxdump RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
  install(FILES ${PROJECT_SOURCE_DIR}/tools/rlxdump/rlxdump.1
          DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
endif()
