# Every public header compiles by itself, with nothing of this project's own settings, and stands in the header that
# has all of its library.

set(sUnits "")
foreach(sLibrary ZkBase ZkTools)
  file(GLOB sHeaders CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}/include
    ${PROJECT_SOURCE_DIR}/include/${sLibrary}/*.h)
  file(READ ${PROJECT_SOURCE_DIR}/include/${sLibrary}/${sLibrary}.h sAll)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
    ${PROJECT_SOURCE_DIR}/include/${sLibrary}/${sLibrary}.h)
  foreach(sHeader ${sHeaders})
    if(NOT sHeader MATCHES "Export.h|Windows.h|${sLibrary}/${sLibrary}.h")
      string(FIND "${sAll}" "#include \"${sHeader}\"" iFound)
      if(iFound EQUAL -1)
        message(SEND_ERROR "include/${sLibrary}/${sLibrary}.h lacks ${sHeader}")
      endif()
    endif()
    cmake_path(GET sHeader STEM sName)
    set(sUnit ${CMAKE_CURRENT_BINARY_DIR}/headers/${sLibrary}_${sName}.cpp)
    # Twice: the guard works.
    file(CONFIGURE OUTPUT ${sUnit} CONTENT "#include \"${sHeader}\"\n#include \"${sHeader}\"\n")
    list(APPEND sUnits ${sUnit})
  endforeach()
endforeach()

add_library(zk_headers OBJECT ${sUnits})
target_link_libraries(zk_headers PRIVATE ZkTools)
if(NOT MSVC)
  target_compile_options(zk_headers PRIVATE -Wall -Wextra -Wshadow -Wconversion)
endif()
