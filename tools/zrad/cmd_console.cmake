# zrad console and zrad serve stand on the console's pieces in console/.
if(NOT TARGET zrad_console)
  add_subdirectory(console)
endif()
target_link_libraries(zrad PRIVATE zrad_console)
