# A toolchain with which CMake configures for a Mac on another system. What is configured with it cannot be linked.
set(CMAKE_SYSTEM_NAME Darwin)
find_program(TAVEL_CLANG clang-16 REQUIRED)
find_program(TAVEL_CLANGXX clang++-16 REQUIRED)
set(CMAKE_C_COMPILER ${TAVEL_CLANG})
set(CMAKE_CXX_COMPILER ${TAVEL_CLANGXX})
set(CMAKE_OBJCXX_COMPILER ${TAVEL_CLANGXX})
# What CMake would find out by linking programs, and where it would look for the tools and headers of Xcode.
set(CMAKE_C_COMPILER_FORCED ON)
set(CMAKE_CXX_COMPILER_FORCED ON)
set(CMAKE_OBJCXX_COMPILER_FORCED ON)
set(CMAKE_HAVE_LIBC_PTHREAD ON)
set(CMAKE_INSTALL_NAME_TOOL true CACHE FILEPATH "")
set(CMAKE_OSX_SYSROOT / CACHE PATH "")
