# The json family shows JSON text through its own formatter.
target_sources(zrad PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/jsontext.cpp)
