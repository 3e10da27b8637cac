# Protections for the programs and modules that ship: those of Debian's own packages (dpkg-buildflags, hardening=+all)
# and what its compiler adds by default. Included by the folders that hold them. A build with sanitizers has stronger
# checks of its own.
if(TAVEL_SANITIZERS)
  return()
endif()

add_compile_options(-fstack-protector-strong)
# The C library checks sizes in optimised code only, and warns without optimisation.
add_compile_options(
  "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:SHELL:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>")
if(APPLE) # everything below is the system's default, or does not exist there
  return()
endif()

add_compile_options(-fstack-clash-protection)
if(CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
  add_compile_options(-fcf-protection)
endif()
# CMake itself adds -fPIC to modules and to the libraries that they link.
add_compile_options($<$<NOT:$<BOOL:$<TARGET_PROPERTY:POSITION_INDEPENDENT_CODE>>>:-fPIE>)
# With -pie, GCC's manual wants -fPIE at linking, too.
add_link_options("$<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:SHELL:-fPIE -pie>" LINKER:-z,relro LINKER:-z,now)
