# What is installed of the targets the folders made, and how CPack packs it
# into three Debian packages (tools/package.sh):
#   pelko-viewer     (component viewer)   the programs, the tab plug-ins with
#                    their translations, desktop entry, icon, man pages
#   libpelkocpp0     (component runtime)  the SDK's shared library
#   libpelkocpp-dev  (component dev)      the SDK's headers, the shared tab code
#                    (headers and libPkoShared.a), the CMake package PelkoSDK
#                    and the pkg-config file pelkocpp.pc
# Included after the folders are added, so that every target exists.
include(CMakePackageConfigHelpers)

# The programs of pelko-viewer; each has its man page in doc/<program>.1.
set(PKO_PROGRAMS PelkoViewer pko-tool)

set(PKO_PACKAGING_DIR ${CMAKE_BINARY_DIR}/packaging)
set(PKO_PACKAGE_viewer pelko-viewer)
set(PKO_PACKAGE_runtime libpelkocpp0)
set(PKO_PACKAGE_dev libpelkocpp-dev)

# Debian wants man pages and changelogs compressed, without a time stamp in
# the gzip header so that packages come out the same on every build.
set(pko_gzipped)
function(pko_gzip input output)
  add_custom_command(OUTPUT ${output}
                     COMMAND sh -c "gzip -9n -c \"$1\" > \"$2\"" sh ${input} ${output}
                     DEPENDS ${input}
                     VERBATIM)
  set(pko_gzipped ${pko_gzipped} ${output} PARENT_SCOPE)
endfunction()

# --- pelko-viewer
install(TARGETS ${PKO_PROGRAMS} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT viewer)
foreach(program IN LISTS PKO_PROGRAMS)
  pko_gzip(${PROJECT_SOURCE_DIR}/doc/${program}.1 ${PKO_PACKAGING_DIR}/${program}.1.gz)
  install(FILES ${PKO_PACKAGING_DIR}/${program}.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT viewer)
endforeach()
install(FILES packaging/pelko-viewer.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT viewer)
install(FILES packaging/pelko-viewer.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps
        COMPONENT viewer)

# --- libpelkocpp0 and libpelkocpp-dev
set_target_properties(PelkoCPP PROPERTIES INSTALL_RPATH "")
install(TARGETS PelkoCPP EXPORT PelkoSDKTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
                PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
install(TARGETS PkoShared EXPORT PelkoSDKTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
install(DIRECTORY PelkoSDK/include/PkoAPI DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev
        FILES_MATCHING PATTERN "*.h")
# What a tab plug-in compiles against: the shared tab code with the plug-in
# interface and its exceptions (all in SharedSource/).
file(GLOB pko_shared_headers ${PROJECT_SOURCE_DIR}/SharedSource/*.h)
install(FILES ${pko_shared_headers}
        DESTINATION ${PKO_INSTALL_TAB_INCLUDEDIR} COMPONENT dev)

install(EXPORT PelkoSDKTargets NAMESPACE PelkoSDK:: DESTINATION ${PKO_INSTALL_CMAKEDIR} COMPONENT dev)
configure_package_config_file(packaging/PelkoSDKConfig.cmake.in ${PKO_PACKAGING_DIR}/PelkoSDKConfig.cmake
                              INSTALL_DESTINATION ${PKO_INSTALL_CMAKEDIR})
write_basic_package_version_file(${PKO_PACKAGING_DIR}/PelkoSDKConfigVersion.cmake
                                 VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${PKO_PACKAGING_DIR}/PelkoSDKConfig.cmake ${PKO_PACKAGING_DIR}/PelkoSDKConfigVersion.cmake
        DESTINATION ${PKO_INSTALL_CMAKEDIR} COMPONENT dev)

# Relative to its own folder, so that it also serves an unpacked package.
file(RELATIVE_PATH PKO_PC_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" PKO_PC_PREFIX "${PKO_PC_PREFIX}")
configure_file(packaging/pelkocpp.pc.in ${PKO_PACKAGING_DIR}/pelkocpp.pc @ONLY)
install(FILES ${PKO_PACKAGING_DIR}/pelkocpp.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

# --- every package: copyright and changelog
pko_gzip(${PROJECT_SOURCE_DIR}/packaging/changelog ${PKO_PACKAGING_DIR}/changelog.gz)
foreach(component viewer runtime dev)
  install(FILES packaging/copyright ${PKO_PACKAGING_DIR}/changelog.gz
          DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${PKO_PACKAGE_${component}} COMPONENT ${component})
endforeach()
add_custom_target(pko_packaging_files ALL DEPENDS ${pko_gzipped})

# What the packages' test checks the unpacked packages against.
get_property(pko_tab_plugins GLOBAL PROPERTY PKO_TAB_PLUGINS)
file(GENERATE OUTPUT ${PKO_PACKAGING_DIR}/manifest.txt
     CONTENT "programs=${PKO_PROGRAMS}\nplugins=${pko_tab_plugins}\nlibdir=${CMAKE_INSTALL_LIBDIR}\n")

# --- CPack
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME pelko)
set(CPACK_PACKAGE_VENDOR Pelko)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Pelko Developers <developers@pelko.example>")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL viewer runtime dev)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SOURCE pelko)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Dependencies come from the shared libraries each package's files link.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# libPelkoCPP is packed separately (libpelkocpp0, which the others depend on
# by component); this is where dpkg-shlibdeps finds it meanwhile.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PKO_BIN_DIR})
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

set(CPACK_DEBIAN_VIEWER_PACKAGE_NAME ${PKO_PACKAGE_viewer})
set(CPACK_DEBIAN_VIEWER_PACKAGE_SECTION graphics)
set(CPACK_COMPONENT_VIEWER_DEPENDS runtime)
set(CPACK_DEBIAN_VIEWER_DESCRIPTION "camera viewer with tab extension plug-ins
PelkoViewer opens a camera of the Pelko SDK (simulated cameras and GenICam
cameras over GigE Vision) and shows its features and live image, with one
tab per plug-in. This package holds the viewer with its plug-ins, among them
the Trigger IO tab for the camera's trigger input and output lines.")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${PKO_PACKAGE_runtime})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# Other packages' dpkg-shlibdeps learn from the shlibs file which package
# provides libPelkoCPP.so.0.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# An ldconfig trigger instead of the maintainer scripts that CPack would
# write to call ldconfig, as Debian wants it today.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/libpelkocpp0/triggers
    ${PROJECT_SOURCE_DIR}/packaging/libpelkocpp0/postinst ${PROJECT_SOURCE_DIR}/packaging/libpelkocpp0/postrm)
install(FILES packaging/libpelkocpp0/lintian-overrides DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides
        RENAME libpelkocpp0 COMPONENT runtime)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "camera SDK ZMT::PkoAPI - shared library
The Pelko camera SDK reaches cameras by feature name and reports feature
changes to observers. It ships simulated cameras and a GenICam backend.
This package holds the shared library libPelkoCPP.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME ${PKO_PACKAGE_dev})
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEV_DEPENDS runtime)
# The CMake package looks for Qt 5 Widgets on behalf of PelkoSDK::PkoShared.
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "qtbase5-dev")
set(CPACK_DEBIAN_DEV_DESCRIPTION "camera SDK ZMT::PkoAPI - development files
The Pelko camera SDK reaches cameras by feature name and reports feature
changes to observers. This package holds the headers, the code shared by
tab plug-ins of PelkoViewer (headers and a static library), the CMake package
PelkoSDK and the pkg-config file pelkocpp.pc.")

include(CPack)
