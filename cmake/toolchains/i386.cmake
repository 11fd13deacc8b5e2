# Cross build for 32-bit x86 with Debian's g++-i686-linux-gnu.
#
# The programs run natively. They name the loader and the directory of the cross C library themselves, so that they
# start directly: death tests, child processes and /proc/self/exe work as they do for native programs.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i386)
set(CMAKE_CXX_COMPILER i686-linux-gnu-g++)

set(MORVAQNDS_SYSROOT_LIB /usr/i686-linux-gnu/lib)
# The old kind of run path also serves the libraries that the program's libraries need.
set(CMAKE_EXE_LINKER_FLAGS_INIT
    "-Wl,--dynamic-linker=${MORVAQNDS_SYSROOT_LIB}/ld-linux.so.2 -Wl,--disable-new-dtags -Wl,-rpath,${MORVAQNDS_SYSROOT_LIB}")

set(CMAKE_FIND_ROOT_PATH /usr/i686-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
