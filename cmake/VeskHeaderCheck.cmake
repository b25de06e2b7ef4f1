# vesk_check_headers(<layer>): compiles each public header of a layer alone, and twice over, so that
# a header that leans on another include, or has no guard, breaks the build.
function(vesk_check_headers layer)
  file(GLOB headers CONFIGURE_DEPENDS
    RELATIVE "${CMAKE_SOURCE_DIR}/src" "${CMAKE_SOURCE_DIR}/src/${layer}/*.h")
  set(sources "")
  foreach(header IN LISTS headers)
    set(source "${CMAKE_CURRENT_BINARY_DIR}/header_check/${header}.cpp")
    file(CONFIGURE OUTPUT "${source}" CONTENT "#include \"${header}\"\n#include \"${header}\"\n")
    list(APPEND sources "${source}")
  endforeach()
  if(sources)
    add_library(${layer}_header_check OBJECT ${sources})
    target_link_libraries(${layer}_header_check PRIVATE vesk_${layer})
    # Nothing of these objects runs.
    target_compile_options(${layer}_header_check PRIVATE -O0 -g0)
  endif()
endfunction()
