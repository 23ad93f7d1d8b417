# hexmire_self_contained_headers(TARGET): compile one generated source file per header of the
# library, so that no header leans on what its includer included before it.
function(hexmire_self_contained_headers target)
  file(GLOB_RECURSE headers CONFIGURE_DEPENDS
    RELATIVE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/hexmire/*.h)
  set(sources)
  foreach(header IN LISTS headers)
    set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}/${header}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "#include <@header@>\n#include <@header@>\n" @ONLY)
    list(APPEND sources ${source})
  endforeach()
  add_library(${target} OBJECT ${sources})
  target_link_libraries(${target} PRIVATE hexmire_settings)
  target_include_directories(${target} SYSTEM PRIVATE
    ${ASIO_INCLUDE_DIR} ${LIBXML2_INCLUDE_DIRS})
  target_compile_options(${target} PRIVATE -O0 -g0)
endfunction()
