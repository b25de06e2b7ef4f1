# vesk_embed_shaders(<target> <namespace> INCLUDES … SHADERS …)
# Puts each shader as a string constant into the generated header "<target>_shaders.h", so that the
# executable needs no files beside it. INCLUDES are the files that shaders may include.
function(vesk_embed_shaders target namespace)
  cmake_parse_arguments(ARG "" "" "INCLUDES;SHADERS" ${ARGN})
  set(header "${CMAKE_CURRENT_BINARY_DIR}/shaders/${target}_shaders.h")
  list(TRANSFORM ARG_SHADERS PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
  list(TRANSFORM ARG_INCLUDES PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
  add_custom_command(
    OUTPUT "${header}"
    COMMAND "${CMAKE_COMMAND}" "-DOUTPUT=${header}" "-DNAMESPACE=${namespace}"
            "-DFILES=${ARG_SHADERS}" -P "${CMAKE_SOURCE_DIR}/cmake/EmbedShaders.cmake"
    DEPENDS ${ARG_SHADERS} ${ARG_INCLUDES} "${CMAKE_SOURCE_DIR}/cmake/EmbedShaders.cmake"
    COMMENT "Embedding the shaders of ${target}"
    VERBATIM)
  # "vesk_shaders" makes all such headers and nothing else, for tools that only read the sources.
  add_custom_target(${target}_shaders DEPENDS "${header}")
  if(NOT TARGET vesk_shaders)
    add_custom_target(vesk_shaders)
  endif()
  add_dependencies(vesk_shaders ${target}_shaders)
  target_sources(${target} PRIVATE "${header}")
  target_include_directories(${target} PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/shaders")
endfunction()
