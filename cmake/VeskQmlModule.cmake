# vesk_qml_module(<target> URI <uri> [QML_FILES …] [SINGLETONS …] [SOURCES …] [LINK …])
# A QML module in a static library. Who wants it links <target> and <target>plugin and names it in
# one of its sources: Q_IMPORT_QML_PLUGIN(<Uri_With_Underscores>Plugin). Its files lie in the
# executable, where the engine looks of its own accord.
function(vesk_qml_module target)
  cmake_parse_arguments(ARG "" "URI" "QML_FILES;SINGLETONS;SOURCES;LINK" ${ARGN})
  if(ARG_SINGLETONS)
    set_source_files_properties(${ARG_SINGLETONS} PROPERTIES QT_QML_SINGLETON_TYPE TRUE)
  endif()
  set(CMAKE_AUTOMOC ON)
  string(REPLACE "." "/" folder "${ARG_URI}")
  qt_add_qml_module(${target} STATIC
    URI ${ARG_URI}
    VERSION 1.0
    RESOURCE_PREFIX /qt-project.org/imports
    OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/qml/${folder}"
    QML_FILES ${ARG_SINGLETONS} ${ARG_QML_FILES}
    SOURCES ${ARG_SOURCES})
  # What is generated includes the types' headers by their bare names.
  target_include_directories(${target}
    PUBLIC "${CMAKE_SOURCE_DIR}/src" PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}")
  target_link_libraries(${target} PUBLIC vesk_compiler ${ARG_LINK} Qt6::Qml Qt6::Quick)
  # The compiler's rules hold for what we write, not for what is generated from it.
  get_target_property(generated ${target} SOURCES)
  list(FILTER generated INCLUDE REGEX "/qmlcache/|_qmltyperegistrations")
  set_source_files_properties(${generated} PROPERTIES COMPILE_OPTIONS -w)
endfunction()
