# Helpers that give every subsystem, test suite, benchmark and fuzz target the same shape.
#
#   zrad_add_subsystem(json SOURCES a.cpp ... [DEPENDS log files] [LIBS ...])
#     an object library zradutils_json whose objects go into libzradutils.so
#   zrad_add_test(json SOURCES a_test.cpp ... [LIBS ...])
#     test_json, linked with the objects of json and everything it depends on, run by ctest
#   zrad_add_bench(json_bench SOURCES ... [LIBS ...])   Google Benchmark program on libzradutils
#   zrad_add_fuzz(json_text SOURCES ... SUBSYSTEMS json)  libFuzzer target fuzz_json_text, part
#     of the target `fuzzers`, and the test fuzz_json_text that fuzzes it for ZRAD_FUZZ_SECONDS
#     from the seed corpus fuzz/<family>/corpus/json_text/ and the kept inputs
#     tests/data/<family>/json_text/; in test builds instead a program replay_json_text that
#     runs those inputs through the same entry point, as the test fuzz_json_text
#   zrad_add_family_dirs()  adds every subdirectory of the current one that has a CMakeLists.txt,
#     but not one named after a subsystem left out of ZRAD_SUBSYSTEMS

function(zrad_add_subsystem name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS;LIBS" ${ARGN})
  set(target zradutils_${name})
  add_library(${target} OBJECT ${ARG_SOURCES})
  target_include_directories(${target}
    PUBLIC ${PROJECT_SOURCE_DIR}/include
    PRIVATE ${PROJECT_SOURCE_DIR}/utils)
  target_link_libraries(${target} PUBLIC zradplatform ${ARG_LIBS})
  target_sources(zradutils PRIVATE $<TARGET_OBJECTS:${target}>)
  target_link_libraries(zradutils PRIVATE ${ARG_LIBS})
  set_property(GLOBAL PROPERTY ZRAD_DEPENDS_${name} log ${ARG_DEPENDS})
endfunction()

# The subsystems `names` stand on, themselves included.
function(_zrad_closure out)
  set(result "")
  set(queue ${ARGN})
  while(queue)
    list(POP_FRONT queue sub)
    if(NOT sub IN_LIST result)
      list(APPEND result ${sub})
      get_property(deps GLOBAL PROPERTY ZRAD_DEPENDS_${sub})
      list(APPEND queue ${deps})
    endif()
  endwhile()
  set(${out} ${result} PARENT_SCOPE)
endfunction()

function(_zrad_link_subsystems target)
  _zrad_closure(subs ${ARGN})
  foreach(sub IN LISTS subs)
    target_link_libraries(${target} PRIVATE zradutils_${sub})
  endforeach()
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/utils)
endfunction()

function(zrad_add_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  find_package(GTest REQUIRED)
  add_executable(test_${name} ${ARG_SOURCES})
  _zrad_link_subsystems(test_${name} ${name})
  target_link_libraries(test_${name} PRIVATE zrad_testsupport GTest::gtest GTest::gtest_main ${ARG_LIBS})
  # Each suite runs in a directory of its own, so relative files (the default "zrad.log") stay there.
  set(workdir ${CMAKE_CURRENT_BINARY_DIR}/run)
  file(MAKE_DIRECTORY ${workdir})
  add_test(NAME ${name} COMMAND test_${name} WORKING_DIRECTORY ${workdir})
endfunction()

function(zrad_add_bench name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  find_package(benchmark REQUIRED)
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE zradutils benchmark::benchmark ${ARG_LIBS})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/bench)
endfunction()

function(zrad_add_fuzz name)
  cmake_parse_arguments(ARG "" "" "SOURCES;SUBSYSTEMS;LIBS" ${ARGN})
  foreach(sub IN LISTS ARG_SUBSYSTEMS)
    if(NOT TARGET zradutils_${sub})
      return()  # a subsystem left out of this build
    endif()
  endforeach()
  get_filename_component(family ${CMAKE_CURRENT_SOURCE_DIR} NAME)
  set(seeds ${CMAKE_CURRENT_SOURCE_DIR}/corpus/${name})
  set(kept ${PROJECT_SOURCE_DIR}/tests/data/${family}/${name})
  if(ZRAD_FUZZ)
    set(target fuzz_${name})
    add_executable(${target} ${ARG_SOURCES})
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer)
    target_link_options(${target} PRIVATE -fsanitize=fuzzer)
    if(NOT TARGET fuzzers)
      add_custom_target(fuzzers)
    endif()
    add_dependencies(fuzzers ${target})
    if(NOT EXISTS ${kept})
      set(kept "")  # libFuzzer refuses a corpus directory that is not there
    endif()
    add_test(NAME fuzz_${name}
             COMMAND sh ${PROJECT_SOURCE_DIR}/fuzz/run_fuzzer.sh $<TARGET_FILE:${target}>
                     ${ZRAD_FUZZ_SECONDS} ${CMAKE_CURRENT_BINARY_DIR}/run/${name} ${seeds} ${kept})
  else()
    set(target replay_${name})
    add_executable(${target} ${ARG_SOURCES} ${PROJECT_SOURCE_DIR}/fuzz/replay_main.cpp)
    add_test(NAME fuzz_${name} COMMAND ${target} ${seeds} ${kept})
  endif()
  _zrad_link_subsystems(${target} ${ARG_SUBSYSTEMS})
  target_link_libraries(${target} PRIVATE ${ARG_LIBS})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/fuzz)  # common/
endfunction()

function(zrad_add_family_dirs)
  file(GLOB dirs LIST_DIRECTORIES true CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*)
  foreach(dir IN LISTS dirs)
    get_filename_component(family ${dir} NAME)
    if(family IN_LIST ZRAD_ALL_SUBSYSTEMS AND NOT family IN_LIST ZRAD_SUBSYSTEMS)
      continue()
    endif()
    if(EXISTS ${dir}/CMakeLists.txt)
      add_subdirectory(${dir})
    endif()
  endforeach()
endfunction()
