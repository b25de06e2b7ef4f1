# What the window costs, measured on a display and a sound server of its own; no Google Benchmark,
# since frames come when they come. Needs what the tests of whole takes are made of.
if(TARGET vesk_virtual_devices AND TARGET vesk_app_window)
  add_executable(editor_figures EditorFigures.cpp FigureTakes.cpp
    "${CMAKE_SOURCE_DIR}/tests/capture/x11/TestDisplay.cpp")
  target_link_libraries(editor_figures PRIVATE
    vesk_app_window vesk_virtual_devices vesk::capture_x11 vesk::editor_pipewire fmt::fmt)
endif()
