# Compiler settings of everything that this project compiles itself, as the interface target zk_options.

add_library(zk_options INTERFACE)
target_compile_definitions(zk_options INTERFACE UNICODE _UNICODE)

if(MSVC)
  target_compile_options(zk_options INTERFACE /W4 /utf-8 /permissive- /Zc:__cplusplus)
else()
  target_compile_options(zk_options INTERFACE -Wall -Wextra -Wshadow -Wconversion)
  # The debug build asserts the standard library's contracts and traps undefined behaviour: there is no address
  # sanitizer for this target.
  target_compile_definitions(zk_options INTERFACE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
  target_compile_options(zk_options INTERFACE
    $<$<CONFIG:Debug>:-fsanitize=undefined -fsanitize-undefined-trap-on-error>)
endif()

# The runtime DLLs of the compiler are shared between all modules and staged beside them: exceptions, strings and
# type_info cross module borders.
function(zk_find_runtime_dlls sResult)
  set(sDlls "")
  if(MINGW)
    foreach(sName libstdc++-6.dll libgcc_s_seh-1.dll libgcc_s_dw2-1.dll libwinpthread-1.dll)
      execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${sName}
        OUTPUT_VARIABLE sPath OUTPUT_STRIP_TRAILING_WHITESPACE)
      if(NOT IS_ABSOLUTE "${sPath}")
        set(sPath "/usr/${ZK_TARGET}/lib/${sName}")
      endif()
      if(EXISTS "${sPath}")
        list(APPEND sDlls "${sPath}")
      endif()
    endforeach()
  endif()
  set(${sResult} "${sDlls}" PARENT_SCOPE)
endfunction()

zk_find_runtime_dlls(ZK_RUNTIME_DLLS)
if(ZK_RUNTIME_DLLS)
  file(COPY ${ZK_RUNTIME_DLLS} DESTINATION "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
endif()
