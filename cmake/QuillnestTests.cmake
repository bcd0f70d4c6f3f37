include(GoogleTest)

# quillnest_tests(ROOM SOURCES... USES TARGETS... [GUI] [TIMEOUT SECONDS] [LABELS ...])
# The tests of one room as one executable `test_ROOM`, with every case known to CTest under "ROOM.Suite.case".
# With GUI the executable has a QApplication and is run under a display of its own by tests/with-display.
function(quillnest_tests room)
  cmake_parse_arguments(T "GUI" "TIMEOUT" "SOURCES;USES;LABELS" ${ARGN})
  if(NOT T_TIMEOUT)
    set(T_TIMEOUT 120)
  endif()
  if(QUILLNEST_SANITIZE)
    math(EXPR T_TIMEOUT "4 * ${T_TIMEOUT}")
  endif()
  set(target test_${room})
  add_executable(${target} ${T_SOURCES})
  set_target_properties(${target} PROPERTIES AUTOMOC ON)
  target_include_directories(${target} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  target_link_libraries(${target} PRIVATE quillnest_qt ${T_USES} GTest::gtest GTest::gmock)
  target_precompile_headers(${target} REUSE_FROM quillnest_pch)
  if(QUILLNEST_SANITIZE)
    # The instrumented code of an empty std::optional looks to g++ 12 as if it were read.
    target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized)
  endif()
  if(T_GUI)
    target_sources(${target} PRIVATE ${CMAKE_SOURCE_DIR}/tests/GuiMain.cpp)
    # One display for the whole executable: starting one for each case would cost more than the case.
    # What is painted depends on the display's scale, which is one for a whole process.
    foreach(scale IN ITEMS 1 1.5 2)
      set(name ${room})
      if(NOT scale EQUAL 1)
        string(APPEND name -at-scale-${scale})
      endif()
      add_test(NAME ${name} COMMAND ${CMAKE_SOURCE_DIR}/tests/with-display $<TARGET_FILE:${target}>)
      set_tests_properties(${name} PROPERTIES
        TIMEOUT ${T_TIMEOUT} LABELS "${T_LABELS}" ENVIRONMENT QT_SCALE_FACTOR=${scale})
    endforeach()
  else()
    target_sources(${target} PRIVATE ${CMAKE_SOURCE_DIR}/tests/CoreMain.cpp)
    gtest_discover_tests(${target} TEST_PREFIX ${room}. DISCOVERY_TIMEOUT 60
      PROPERTIES TIMEOUT ${T_TIMEOUT} LABELS "${T_LABELS}")
  endif()
endfunction()
