# What each library is for, and why it was chosen: docs/dependencies.md.
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(simdjson REQUIRED)
pkg_check_modules(glib REQUIRED IMPORTED_TARGET glib-2.0)
pkg_check_modules(lmdb REQUIRED IMPORTED_TARGET lmdb)
pkg_check_modules(libedit REQUIRED IMPORTED_TARGET libedit)
find_package(CLI11 REQUIRED)
