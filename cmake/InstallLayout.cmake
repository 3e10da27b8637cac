# Where `cmake --install` puts things. Programs find each other by relative paths, so an installed tree can be moved as
# a whole. docs/packaging.md describes the layout.
include(GNUInstallDirs)
set(TAVEL_INSTALL_MODULEDIR ${CMAKE_INSTALL_LIBDIR}/tavel)

set(modules ${CMAKE_INSTALL_FULL_LIBDIR}/tavel)
file(RELATIVE_PATH TAVEL_MODULES_FROM_AGENT ${CMAKE_INSTALL_FULL_LIBEXECDIR} ${modules})
file(RELATIVE_PATH TAVEL_MODULES_FROM_TOOLS ${CMAKE_INSTALL_FULL_BINDIR} ${modules})
file(RELATIVE_PATH TAVEL_AGENT_FROM_TOOLS ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBEXECDIR})
unset(modules)
