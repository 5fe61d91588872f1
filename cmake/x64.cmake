# Cross-compiles for 64-bit Windows with GCC; the programs run under Wine.
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(ZK_TARGET x86_64-w64-mingw32)
include("${CMAKE_CURRENT_LIST_DIR}/mingw.cmake")
