# zrad shape draws through the contexts in render/: SVG text, and cairo pixels (cairo is the
# tool's alone; the library never links it).
find_package(PkgConfig REQUIRED)
pkg_check_modules(CAIRO REQUIRED IMPORTED_TARGET cairo)
file(GLOB render_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/render/*.cpp)
target_sources(zrad PRIVATE ${render_sources})
target_link_libraries(zrad PRIVATE PkgConfig::CAIRO)
# PNG output needs the raster module at run time.
if(TARGET ZrRaster)
  add_dependencies(zrad ZrRaster)
endif()
