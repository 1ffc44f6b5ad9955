# Where an installation has its parts. All folders are relative to the prefix.
include(GNUInstallDirs)
set(RLX_FILTER_DIRECTORY "${CMAKE_INSTALL_LIBEXECDIR}" CACHE STRING
    "Folder of the spooler's filters, relative to the prefix")
set(RLX_CUPS_SERVERBIN "lib/cups" CACHE STRING
    "Folder of the programs that CUPS runs, relative to the prefix")
set(RLX_CUPS_DATADIR "${CMAKE_INSTALL_DATADIR}/cups" CACHE STRING
    "Folder of CUPS's data, relative to the prefix")
