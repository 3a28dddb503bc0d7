# Describes the Debian packages to cpack, one for each component of the installation: the shared
# library, what a host is developed with, the program and, where they are built, the window and the
# program for several processes.
set(crawler_library_package libcrawler${PROJECT_VERSION_MAJOR})
set(crawler_debian_version ${PROJECT_VERSION}-1)

# The changelog begins with the release that is packed, and says when it was.
file(STRINGS ${PROJECT_SOURCE_DIR}/CHANGELOG.md crawler_release LIMIT_COUNT 1 REGEX "^## \\[[0-9]")
if(NOT crawler_release MATCHES "^## \\[${PROJECT_VERSION}\\] - ([0-9]+-[0-9]+-[0-9]+)$")
  message(FATAL_ERROR "CHANGELOG.md: the newest release is not ${PROJECT_VERSION} with its date")
endif()
execute_process(
  COMMAND date --utc --rfc-email --date=${CMAKE_MATCH_1}
  OUTPUT_VARIABLE crawler_release_date
  OUTPUT_STRIP_TRAILING_WHITESPACE)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME casetable)
set(CPACK_PACKAGE_VENDOR "The casetable developers")
set(CPACK_PACKAGE_CONTACT "The casetable developers <casetable@localhost.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # Each package's description begins with its own.
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL library development program)
if(CRAWLER_BUILD_WINDOW)
  list(APPEND CPACK_COMPONENTS_ALL window)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${crawler_library_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION
    "turns folder trees of results into case tables (shared library)
The module of a host application that walks a folder tree, reads values out
of every path by markers, groups files with equal values into cases, selects
auxiliary files by wildcard and gives a table with a row for each case.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libcrawler-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${crawler_library_package} (= ${crawler_debian_version}), qtbase5-dev, libboost-dev, libvtk9-dev")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
    "turns folder trees of results into case tables (development files)
The headers of the module and of the contracts that a host implements, the
static library of stand-ins for the host's own classes, and the files by which
CMake and pkg-config find them.")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME casetable)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/crawler)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS
    "${crawler_library_package} (= ${crawler_debian_version})")
set(CPACK_DEBIAN_PROGRAM_DESCRIPTION
    "turns folder trees of results into case tables
Reads values out of the paths of a folder tree by the markers before them,
groups files with equal values into numbered cases, and writes the table as
CSV, TSV, JSON, XML, for people or as an SQLite database. It proposes markers,
and tells how a path is read.")

set(crawler_components LIBRARY DEVELOPMENT PROGRAM)
if(CRAWLER_BUILD_MPI)
  list(APPEND CPACK_COMPONENTS_ALL mpi)
  list(APPEND crawler_components MPI)
  set(CPACK_DEBIAN_MPI_PACKAGE_NAME casetable-mpi)
  set(CPACK_DEBIAN_MPI_PACKAGE_SECTION utils)
  set(CPACK_DEBIAN_MPI_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_MPI_PACKAGE_DEPENDS
      "${crawler_library_package} (= ${crawler_debian_version}), openmpi-bin")
  set(CPACK_DEBIAN_MPI_DESCRIPTION
      "turns folder trees of results into case tables (in several processes)
Does what casetable does, and writes the same bytes, but divides the work among
processes of MPI, on one machine or many that see the same files.")
endif()
if(CRAWLER_BUILD_WINDOW)
  list(APPEND crawler_components WINDOW)
  set(CPACK_DEBIAN_WINDOW_PACKAGE_NAME casetable-window)
  set(CPACK_DEBIAN_WINDOW_PACKAGE_SECTION science)
  set(CPACK_DEBIAN_WINDOW_PACKAGE_SHLIBDEPS ON)
  # The icon is a drawing, which only this plugin reads.
  set(CPACK_DEBIAN_WINDOW_PACKAGE_DEPENDS
      "${crawler_library_package} (= ${crawler_debian_version}), libqt5svg5")
  set(CPACK_DEBIAN_WINDOW_PACKAGE_SUGGESTS casetable)
  set(CPACK_DEBIAN_WINDOW_DESCRIPTION
      "turns folder trees of results into case tables (window)
Shows the files of a folder tree, what is read from each path, and the table
of cases that comes of it. A value that is selected in a path and named
becomes a column. A grid shows which combinations of values are missing.")
endif()

# What every package says of itself.
function(crawler_gzip from to)
  execute_process(COMMAND gzip -9 --no-name --stdout ${from} OUTPUT_FILE ${to})
endfunction()
set(crawler_doc_dir ${PROJECT_BINARY_DIR}/debian)
configure_file(${PROJECT_SOURCE_DIR}/cmake/debian/changelog.in ${crawler_doc_dir}/changelog.Debian
               @ONLY)
crawler_gzip(${crawler_doc_dir}/changelog.Debian ${crawler_doc_dir}/changelog.Debian.gz)
crawler_gzip(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${crawler_doc_dir}/changelog.gz)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/CHANGELOG.md)
foreach(component IN LISTS crawler_components)
  string(TOLOWER ${component} name)
  install(
    FILES ${PROJECT_SOURCE_DIR}/cmake/debian/copyright ${crawler_doc_dir}/changelog.Debian.gz
          ${crawler_doc_dir}/changelog.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${component}_PACKAGE_NAME}
    COMPONENT ${name})
endforeach()

include(CPack)
