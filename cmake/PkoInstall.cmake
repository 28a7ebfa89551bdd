# Where things go when installed, and the helper that a tab plug-in's folder
# calls to install itself. Included before the folders are added.
#
# Installed layout (under the prefix, /usr for the packages):
#   bin/                          the programs
#   lib/<multiarch>/              libPelkoCPP, libPkoShared.a, cmake/, pkgconfig/
#   lib/<multiarch>/pelko/        the viewer's own folder: it works from here
#   lib/<multiarch>/pelko/plugins the tab plug-ins and their translations
#   include/PkoAPI, include/PelkoTab
#
# Installed programs and plug-ins find the SDK library through an RPATH
# relative to themselves, and the viewer finds its folder relative to its own
# program, so that a package unpacked anywhere runs as it is.
include(GNUInstallDirs)

set(PKO_INSTALL_HOME ${CMAKE_INSTALL_LIBDIR}/pelko)
set(PKO_INSTALL_PLUGINDIR ${PKO_INSTALL_HOME}/plugins)
set(PKO_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/PelkoSDK)
set(PKO_INSTALL_TAB_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/PelkoTab)

file(RELATIVE_PATH _pko_bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH _pko_plugins_to_lib ${CMAKE_INSTALL_FULL_LIBDIR}/pelko/plugins ${CMAKE_INSTALL_FULL_LIBDIR})
# The viewer's folder as seen from the folder of the installed viewer.
file(RELATIVE_PATH PKO_HOME_FROM_BINDIR ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR}/pelko)
set(CMAKE_INSTALL_RPATH "\$ORIGIN/${_pko_bin_to_lib}")

# pko_install_tab_plugin(TARGET TS_FILE)
# Installs the tab plug-in TARGET into the plug-in folder together with the
# translation its folder compiles from TS_FILE into ${PKO_PLUGIN_DIR}, both in
# the pelko-viewer package. The packages' test expects one tab per plug-in
# installed this way.
function(pko_install_tab_plugin target ts_file)
  get_filename_component(qm_name ${ts_file} NAME_WE)
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "\$ORIGIN/${_pko_plugins_to_lib}")
  install(TARGETS ${target}
          LIBRARY DESTINATION ${PKO_INSTALL_PLUGINDIR} COMPONENT viewer
                  PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  install(FILES ${PKO_PLUGIN_DIR}/${qm_name}.qm DESTINATION ${PKO_INSTALL_PLUGINDIR} COMPONENT viewer)
  set_property(GLOBAL APPEND PROPERTY PKO_TAB_PLUGINS ${target})
endfunction()
