# Compiler settings of everything that this project compiles itself, as the interface target zk_options.

add_library(zk_options INTERFACE)
target_compile_definitions(zk_options INTERFACE UNICODE _UNICODE)

if(MSVC)
  # 4251 and 4275: whoever uses the DLLs has the same standard library.
  target_compile_options(zk_options INTERFACE /W4 /wd4251 /wd4275 /utf-8 /permissive- /Zc:__cplusplus)
else()
  target_compile_options(zk_options INTERFACE -Wall -Wextra -Wshadow -Wconversion)
  # The debug build asserts the standard library's contracts and traps undefined behaviour: there is no address
  # sanitizer for this target.
  target_compile_definitions(zk_options INTERFACE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
  target_compile_options(zk_options INTERFACE
    $<$<CONFIG:Debug>:-fsanitize=undefined -fsanitize-undefined-trap-on-error>)
endif()

# Gives a module its version resource.
function(zk_add_version sTarget sDescription)
  get_target_property(sType ${sTarget} TYPE)
  set(sFileType VFT_DLL)
  if(sType STREQUAL EXECUTABLE)
    set(sFileType VFT_APP)
  endif()
  configure_file(${PROJECT_SOURCE_DIR}/cmake/Version.rc.in ${CMAKE_CURRENT_BINARY_DIR}/${sTarget}.version.rc @ONLY)
  target_sources(${sTarget} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${sTarget}.version.rc)
endfunction()

# The runtime DLLs of the compiler are shared between all modules and staged beside them: exceptions, strings and
# type_info cross module borders.
function(zk_find_runtime_dlls sResult)
  set(sDlls "")
  if(MINGW)
    cmake_path(GET CMAKE_CXX_COMPILER PARENT_PATH sCompilerDir)
    foreach(sName libstdc++-6.dll libgcc_s_seh-1.dll libgcc_s_dw2-1.dll libwinpthread-1.dll)
      execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${sName}
        OUTPUT_VARIABLE sPath OUTPUT_STRIP_TRAILING_WHITESPACE)
      # The compiler's own answer; beside the compiler, as on Windows; where a cross-compiler has its target's files.
      foreach(sCandidate "${sPath}" "${sCompilerDir}/${sName}" "${sCompilerDir}/../${ZK_TARGET}/lib/${sName}")
        if(IS_ABSOLUTE "${sCandidate}" AND EXISTS "${sCandidate}")
          list(APPEND sDlls "${sCandidate}")
          break()
        endif()
      endforeach()
    endforeach()
  endif()
  set(${sResult} "${sDlls}" PARENT_SCOPE)
endfunction()

zk_find_runtime_dlls(ZK_RUNTIME_DLLS)
if(ZK_RUNTIME_DLLS)
  file(COPY ${ZK_RUNTIME_DLLS} DESTINATION "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
endif()
