# 32-bit x86 with Debian's cross compiler; the programs run as they are on a 64-bit machine.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER i686-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER i686-linux-gnu-g++)
# Where find_library looks: the i386 packages' folder, never the native one.
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
# SSE rounds floats the way the other targets do; x87 does not.
set(CMAKE_C_FLAGS_INIT "-msse2 -mfpmath=sse")
set(CMAKE_CXX_FLAGS_INIT "-msse2 -mfpmath=sse")
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/i386-linux-gnu/pkgconfig)
