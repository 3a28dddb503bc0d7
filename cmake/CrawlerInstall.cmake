# Installs the library, its public headers and the files by which others find them, in three
# components: `library`, `development` and `program`; and `mpi` and `window` where these are built.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# One folder to include from, so that a host's own `crawler/` or `host/` is never met by accident.
set(crawler_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/crawler-${PROJECT_VERSION_MAJOR})
set(crawler_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Crawler)
set(crawler_pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(
  TARGETS crawler
  EXPORT CrawlerTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
          COMPONENT library
          NAMELINK_COMPONENT development
  INCLUDES
  DESTINATION ${crawler_include_dir})
install(
  TARGETS crawler_host
  EXPORT CrawlerTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  INCLUDES
  DESTINATION ${crawler_include_dir})
install(
  DIRECTORY ${PROJECT_SOURCE_DIR}/crawler ${PROJECT_SOURCE_DIR}/host
  DESTINATION ${crawler_include_dir}
  COMPONENT development
  FILES_MATCHING
  PATTERN "*.h"
  PATTERN "private" EXCLUDE)

# For find_package(Crawler).
install(
  EXPORT CrawlerTargets
  NAMESPACE Crawler::
  DESTINATION ${crawler_package_dir}
  COMPONENT development)
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/CrawlerConfig.cmake.in ${PROJECT_BINARY_DIR}/CrawlerConfig.cmake
  INSTALL_DESTINATION ${crawler_package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/CrawlerConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(
  FILES ${PROJECT_BINARY_DIR}/CrawlerConfig.cmake ${PROJECT_BINARY_DIR}/CrawlerConfigVersion.cmake
  DESTINATION ${crawler_package_dir}
  COMPONENT development)

# For pkg-config. Qt has a file of its own to require; where Boost's headers and VTK are is written
# down as it was found here.
set(crawler_pc_cflags)
set(crawler_pc_libs)
foreach(target Boost::headers VTK::CommonDataModel VTK::CommonCore)
  get_target_property(directories ${target} INTERFACE_INCLUDE_DIRECTORIES)
  foreach(directory IN LISTS directories)
    list(APPEND crawler_pc_cflags -I${directory})
  endforeach()
endforeach()
foreach(target VTK::CommonDataModel VTK::CommonCore)
  get_target_property(location ${target} LOCATION)
  get_filename_component(directory ${location} DIRECTORY)
  get_filename_component(name ${location} NAME)
  string(REGEX REPLACE "^lib(.*)\\.(so|a)[.0-9]*$" "\\1" name ${name})
  list(APPEND crawler_pc_libs -L${directory} -l${name})
endforeach()
list(REMOVE_DUPLICATES crawler_pc_cflags)
list(REMOVE_DUPLICATES crawler_pc_libs)
string(REPLACE ";" " " crawler_pc_cflags "${crawler_pc_cflags}")
string(REPLACE ";" " " crawler_pc_libs "${crawler_pc_libs}")
file(RELATIVE_PATH crawler_prefix_from_pc ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
     ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" crawler_prefix_from_pc ${crawler_prefix_from_pc})
set(crawler_pc_includedir ${crawler_include_dir})
set(crawler_pc_libdir ${CMAKE_INSTALL_LIBDIR})
foreach(directory includedir libdir)
  if(NOT IS_ABSOLUTE ${crawler_pc_${directory}})
    string(PREPEND crawler_pc_${directory} "\${prefix}/")
  endif()
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/cmake/crawler.pc.in ${PROJECT_BINARY_DIR}/crawler.pc @ONLY)
install(
  FILES ${PROJECT_BINARY_DIR}/crawler.pc
  DESTINATION ${crawler_pkgconfig_dir}
  COMPONENT development)

if(CRAWLER_BUILD_CASETABLE)
  # Finds the library beside itself wherever both are installed together.
  file(RELATIVE_PATH crawler_lib_from_bin ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(casetable PROPERTIES INSTALL_RPATH "$ORIGIN/${crawler_lib_from_bin}")
  install(
    TARGETS casetable
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    COMPONENT program)

  if(CRAWLER_BUILD_MPI)
    set_target_properties(casetable-mpi PROPERTIES INSTALL_RPATH "$ORIGIN/${crawler_lib_from_bin}")
    install(
      TARGETS casetable-mpi
      RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
      COMPONENT mpi)
  endif()

  # The manual pages and the completions are made of the table of options.
  set(crawler_described)
  foreach(template docs/casetable.1 docs/casetable-mpi.1 completions/casetable.bash
                   completions/_casetable completions/casetable.fish)
    get_filename_component(name ${template} NAME)
    string(REGEX MATCH "casetable-mpi" program ${name})
    set(source ${PROJECT_SOURCE_DIR}/${template}.in)
    add_custom_command(
      OUTPUT ${PROJECT_BINARY_DIR}/${name}
      COMMAND casetable_describe ${program} < ${source} > ${PROJECT_BINARY_DIR}/${name}
      DEPENDS casetable_describe ${source}
      VERBATIM)
    list(APPEND crawler_described ${PROJECT_BINARY_DIR}/${name})
  endforeach()
  set(crawler_manual ${PROJECT_BINARY_DIR}/casetable.1)
  set(crawler_manual_mpi ${PROJECT_BINARY_DIR}/casetable-mpi.1)
  set(crawler_zsh_dir ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
  if(CRAWLER_PACKAGE)
    # Debian's manner.
    foreach(manual crawler_manual crawler_manual_mpi)
      add_custom_command(
        OUTPUT ${${manual}}.gz
        COMMAND gzip -9 --no-name --keep --force ${${manual}}
        DEPENDS ${${manual}}
        VERBATIM)
      set(${manual} ${${manual}}.gz)
      list(APPEND crawler_described ${${manual}})
    endforeach()
    set(crawler_zsh_dir ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
  endif()
  add_custom_target(crawler_described ALL DEPENDS ${crawler_described})
  install(
    FILES ${crawler_manual}
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
    COMPONENT program)
  if(CRAWLER_BUILD_MPI)
    install(
      FILES ${crawler_manual_mpi}
      DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
      COMPONENT mpi)
  endif()
  install(
    FILES ${PROJECT_BINARY_DIR}/casetable.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME casetable
    COMPONENT program)
  install(
    FILES ${PROJECT_BINARY_DIR}/_casetable
    DESTINATION ${crawler_zsh_dir}
    COMPONENT program)
  install(
    FILES ${PROJECT_BINARY_DIR}/casetable.fish
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d
    COMPONENT program)
endif()

if(CRAWLER_BUILD_WINDOW)
  set_target_properties(casetable_window PROPERTIES INSTALL_RPATH "$ORIGIN/${crawler_lib_from_bin}")
  install(
    TARGETS casetable_window
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    COMPONENT window)
  install(
    FILES ${PROJECT_SOURCE_DIR}/window/casetable-window.desktop
    DESTINATION ${CMAKE_INSTALL_DATADIR}/applications
    COMPONENT window)
  install(
    FILES ${PROJECT_SOURCE_DIR}/window/casetable-window.xml
    DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages
    COMPONENT window)
  install(
    FILES ${PROJECT_SOURCE_DIR}/window/casetable.svg
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps
    RENAME casetable-window.svg
    COMPONENT window)
  set(crawler_window_manual ${PROJECT_SOURCE_DIR}/docs/casetable-window.1)
  if(CRAWLER_PACKAGE)
    set(crawler_window_manual ${PROJECT_BINARY_DIR}/casetable-window.1.gz)
    execute_process(COMMAND gzip -9 --no-name --stdout ${PROJECT_SOURCE_DIR}/docs/casetable-window.1
                    OUTPUT_FILE ${crawler_window_manual})
  endif()
  install(
    FILES ${crawler_window_manual}
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
    COMPONENT window)
endif()
