# zrad serve shares the console's pieces (starting a service).
include(${CMAKE_CURRENT_LIST_DIR}/cmd_console.cmake)
