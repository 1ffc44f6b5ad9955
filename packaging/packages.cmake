# Debian packages by CPack, one for each component of packaging/install.cmake. Included when
# RLX_PACKAGES is on; tools/make-packages.sh does the whole of it.
set(RLX_PACKAGE_VERSION "${PROJECT_VERSION}" CACHE STRING
    "Version of the packages; another one than the project's is for tests of upgrades")
set(RLX_MAINTAINER "zqeuctorlx maintainers <zqeuctorlx@packages.invalid>" CACHE STRING
    "Who answers for the packages: name <mail address>")
set(debian_directory ${PROJECT_SOURCE_DIR}/packaging/debian)
set(package_version ${RLX_PACKAGE_VERSION}-1)

# ---- What Debian asks of every package -----------------------------------------------------------
# The time of the source (SOURCE_DATE_EPOCH), so that the same source makes the same packages.
string(TIMESTAMP package_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(${debian_directory}/changelog.in ${PROJECT_BINARY_DIR}/debian/changelog.Debian @ONLY)
add_compressed(${PROJECT_BINARY_DIR}/debian/changelog.Debian
               ${PROJECT_BINARY_DIR}/debian/changelog.Debian.gz)
add_compressed(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${PROJECT_BINARY_DIR}/debian/changelog.gz)
foreach(component IN LISTS rlx_installed_components)
  install(FILES ${PROJECT_BINARY_DIR}/debian/changelog.Debian.gz
                ${PROJECT_BINARY_DIR}/debian/changelog.gz ${debian_directory}/copyright
          DESTINATION ${rlx_document_directory}/${component} COMPONENT ${component})
  configure_file(${debian_directory}/lintian-overrides.in
                 ${PROJECT_BINARY_DIR}/debian/lintian-overrides/${component} @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/debian/lintian-overrides/${component}
          DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides COMPONENT ${component})
endforeach()

# ---- The packages --------------------------------------------------------------------------------
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zqeuctorlx)
set(CPACK_PACKAGE_VERSION ${RLX_PACKAGE_VERSION})
set(CPACK_PACKAGE_VENDOR "zqeuctorlx")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_OUTPUT_FILE_PREFIX ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL ${rlx_installed_components})
set(CPACK_COMPONENTS_GROUPING IGNORE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${RLX_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SECTION text)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# debian_package(COMPONENT SUMMARY DESCRIPTION [DEPENDS packages] [RECOMMENDS packages]
# [SUGGESTS packages]): what is particular to one. The summary stands in front of the description,
# and not in CPACK_PACKAGE_DESCRIPTION_SUMMARY, which CPack gives to all of them. Dependencies on
# libraries are found out; the maintainer scripts are those of packaging/debian/COMPONENT/. A macro,
# for CPack's variables.
macro(debian_package component summary description)
  cmake_parse_arguments(package "" "DEPENDS;RECOMMENDS;SUGGESTS" "" ${ARGN})
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${component})
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${summary}\n${description}")
  foreach(field IN ITEMS DEPENDS RECOMMENDS SUGGESTS)
    if(package_${field})
      set(CPACK_DEBIAN_${upper}_PACKAGE_${field} "${package_${field}}")
    endif()
  endforeach()
  file(GLOB scripts ${debian_directory}/${component}/p*inst ${debian_directory}/${component}/p*rm)
  if(scripts)
    set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA "${scripts}")
  endif()
endmacro()

debian_package(
  zqeuctorlx
  "print filter from line-printer jobs to RLX page-printer jobs"
  "It reads one line-printer job, text with control characters and sequences,
and writes the same job in the page-printer language RLX: cut into pages and
counted blocks, with the pitch of every line of a form and the settings
repeated behind each block. A spooler starts it once per job.
.
This package has the filter alone; rlx-cups and rlx-lprng fit it into
spoolers."
  SUGGESTS "rlx-tools, rlx-cups | rlx-lprng")

debian_package(
  rlx-tools
  "tools for RLX page-printer jobs and line-printer forms"
  "rlxdump shows an RLX job as text, checks it and compares two; rlxproof draws
the sheets of a job as a PDF before they are printed; fcbcheck checks and draws
the forms (FCB) of the line-printer filter zqeuctorlx. Sample forms are in
/usr/share/rlx/forms."
  RECOMMENDS "zqeuctorlx, fonts-liberation, fonts-ipafont-gothic")

debian_package(
  rlx-cups
  "RLX page printers in CUPS"
  "A CUPS filter that prints text and line-printer jobs by zqeuctorlx, and counts
their pages; a driver with the options of the queue and of jobs; the MIME types
of line-printer and RLX jobs; and rlx-queue, which makes queues with their
forms."
  DEPENDS "zqeuctorlx (= ${package_version}), rlx-tools (= ${package_version}), cups")

debian_package(
  rlx-lprng
  "RLX page printers in LPRng"
  "An input filter for LPRng's lpd that prints text and line-printer jobs by
zqeuctorlx, and a sample printcap entry."
  DEPENDS "zqeuctorlx (= ${package_version}), rlx-tools (= ${package_version}), lprng")

debian_package(
  rlx-printer-app
  "RLX page printers as IPP printers"
  "A printer application: a server that hosts and desktops print to by IPP, with a
web page. It takes text, line-printer and RLX jobs, runs zqeuctorlx for each,
and hands the result to printers on the network; jobs that it has accepted
outlive a crash."
  DEPENDS
  "zqeuctorlx (= ${package_version}), rlx-tools (= ${package_version}), adduser"
  SUGGESTS "avahi-daemon")

include(CPack)
