# Installs the library, its public headers and the package files that find_package(Crawler) reads.
include(CMakePackageConfigHelpers)

set(crawler_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Crawler)

install(
  TARGETS crawler crawler_host
  EXPORT CrawlerTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(
  DIRECTORY ${PROJECT_SOURCE_DIR}/crawler ${PROJECT_SOURCE_DIR}/host
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING
  PATTERN "*.h"
  PATTERN "CrawlerFilePath.h" EXCLUDE)
install(
  EXPORT CrawlerTargets
  NAMESPACE Crawler::
  DESTINATION ${crawler_package_dir})

configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/CrawlerConfig.cmake.in ${PROJECT_BINARY_DIR}/CrawlerConfig.cmake
  INSTALL_DESTINATION ${crawler_package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/CrawlerConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/CrawlerConfig.cmake
              ${PROJECT_BINARY_DIR}/CrawlerConfigVersion.cmake
        DESTINATION ${crawler_package_dir})

if(CRAWLER_BUILD_CASETABLE)
  # Finds the library beside itself wherever both are installed together.
  file(RELATIVE_PATH crawler_lib_from_bin ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(casetable PROPERTIES INSTALL_RPATH "$ORIGIN/${crawler_lib_from_bin}")
  install(TARGETS casetable RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
