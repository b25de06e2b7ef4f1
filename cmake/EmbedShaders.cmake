# Called as a script by vesk_embed_shaders: OUTPUT, NAMESPACE, FILES (a list). Expands the
# `#include "file"` lines, which GLSL does not know, writes each expanded shader beside OUTPUT and
# all of them into OUTPUT as string constants.
get_filename_component(folder "${OUTPUT}" DIRECTORY)
set(text "// Generated from the .glsl files beside the sources.\n#pragma once\n\n#include <string_view>\n\nnamespace ${NAMESPACE} {\n\n")
foreach(file IN LISTS FILES)
  get_filename_component(symbol "${file}" NAME_WE)
  get_filename_component(source_folder "${file}" DIRECTORY)
  file(READ "${file}" body)
  while(body MATCHES "#include \"([A-Za-z]+\\.glsl)\"\n")
    set(name "${CMAKE_MATCH_1}")
    file(READ "${source_folder}/${name}" included)
    string(REPLACE "#include \"${name}\"\n" "${included}" body "${body}")
  endwhile()
  file(WRITE "${folder}/${symbol}.glsl" "${body}")
  string(APPEND text "inline constexpr std::string_view ${symbol} = R\"glsl(${body})glsl\";\n\n")
endforeach()
string(APPEND text "}  // namespace ${NAMESPACE}\n")
file(WRITE "${OUTPUT}" "${text}")
