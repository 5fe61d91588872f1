# What the two MinGW toolchain files share; they set ZK_TARGET first.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${ZK_TARGET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${ZK_TARGET}-g++-posix)
set(CMAKE_RC_COMPILER ${ZK_TARGET}-windres)

find_program(ZK_CCACHE ccache)
if(ZK_CCACHE)
  set(CMAKE_C_COMPILER_LAUNCHER ${ZK_CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${ZK_CCACHE})
endif()

# Dependencies that scripts/setup builds for this target lie in the cache, outside the source tree.
if(DEFINED ENV{ZK_DEPS})
  set(ZK_DEPS "$ENV{ZK_DEPS}/${ZK_TARGET}")
else()
  set(ZK_DEPS "$ENV{HOME}/.cache/zktools/${ZK_TARGET}")
endif()

set(CMAKE_FIND_ROOT_PATH /usr/${ZK_TARGET} ${ZK_DEPS})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# zlib goes into the DLL, as the other dependencies do.
set(ZLIB_USE_STATIC_LIBS ON)

set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../scripts/wine")
