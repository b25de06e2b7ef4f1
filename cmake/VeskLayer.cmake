# vesk_layer(<name> SOURCES … [PUBLIC …] [PRIVATE …])
# One static library per layer: target vesk_<name>, alias vesk::<name>, headers included as
# "<name>/Type.h" from src/.
function(vesk_layer name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(vesk_${name} STATIC ${ARG_SOURCES})
  add_library(vesk::${name} ALIAS vesk_${name})
  target_include_directories(vesk_${name} PUBLIC "${CMAKE_SOURCE_DIR}/src")
  target_link_libraries(vesk_${name} PUBLIC vesk_compiler ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
endfunction()
