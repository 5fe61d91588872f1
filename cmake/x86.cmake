# Cross-compiles for 32-bit Windows with GCC: proves that the sources and layouts hold there.
set(CMAKE_SYSTEM_PROCESSOR x86)
set(ZK_TARGET i686-w64-mingw32)
set(CMAKE_CXX_FLAGS_INIT "-msse2")
include("${CMAKE_CURRENT_LIST_DIR}/mingw.cmake")
