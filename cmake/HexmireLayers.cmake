# One object library per folder of hexmire/, linked only along the arrows of the architecture.
#
# hexmire_layer(NAME USES LAYER...): all .cpp files below hexmire/NAME become hexmire_NAME.
function(hexmire_layer name)
  cmake_parse_arguments(LAYER "" "" "USES" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/hexmire/${name}/*.cpp)
  if(sources)
    add_library(hexmire_${name} OBJECT ${sources})
    set(scope PUBLIC)
  else()
    add_library(hexmire_${name} INTERFACE)
    set(scope INTERFACE)
  endif()
  target_link_libraries(hexmire_${name} ${scope} hexmire_settings)
  foreach(used IN LISTS LAYER_USES)
    target_link_libraries(hexmire_${name} ${scope} hexmire_${used})
  endforeach()
endfunction()

# hexmire_layer_objects(TARGET SCOPE LAYER...): put the object files of layers into TARGET.
function(hexmire_layer_objects target)
  foreach(layer IN LISTS ARGN)
    get_target_property(type hexmire_${layer} TYPE)
    if(type STREQUAL "OBJECT_LIBRARY")
      target_sources(${target} PRIVATE $<TARGET_OBJECTS:hexmire_${layer}>)
    endif()
  endforeach()
endfunction()
