# The fuzz targets as tests: each a few seconds long, behind one that builds them all.
set(fuzz_environment
  QUILLNEST_FUZZ_BUILD=${CMAKE_BINARY_DIR}/fuzz
  QUILLNEST_SAMPLES=${CMAKE_BINARY_DIR}/samples)
add_test(NAME fuzz.build COMMAND ${CMAKE_CURRENT_LIST_DIR}/run --build)
set_tests_properties(fuzz.build PROPERTIES FIXTURES_SETUP fuzz TIMEOUT 900 ENVIRONMENT "${fuzz_environment}")
file(GLOB fuzz_targets CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/targets/*.cpp)
foreach(source IN LISTS fuzz_targets)
  cmake_path(GET source STEM target)
  add_test(NAME fuzz.${target} COMMAND ${CMAKE_CURRENT_LIST_DIR}/run ${target})
  set_tests_properties(fuzz.${target} PROPERTIES FIXTURES_REQUIRED fuzz TIMEOUT 120 ENVIRONMENT "${fuzz_environment}")
endforeach()
