# A folder is a library. Headers are included from the source root, so an include names its folder and the
# layer check can read it.

# lorvane_library(<name> SOURCES ... [LINKS ...]): the static library lorvane_<name>.
function(lorvane_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
  add_library(lorvane_${name} STATIC ${arg_SOURCES})
  target_include_directories(lorvane_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(lorvane_${name} PUBLIC ${arg_LINKS} PRIVATE ${arg_PRIVATE_LINKS} lorvane_warnings)
  target_compile_definitions(lorvane_${name} PUBLIC QT_NO_KEYWORDS QT_NO_CAST_TO_ASCII)
endfunction()

# Every suite with the label "unit", so that a build with sanitizers makes nothing else.
add_custom_target(unit_suites)

# lorvane_test(<name> SOURCES ... LINKS ... [LABELS ...]): a suite with virtual time; one ctest entry a suite.
function(lorvane_test name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINKS;LABELS" ${ARGN})
  if(NOT BUILD_TESTING)
    return()
  endif()
  add_executable(lorvane_${name}_test ${arg_SOURCES})
  target_link_libraries(lorvane_${name}_test PRIVATE ${arg_LINKS} lorvane_test_main lorvane_warnings)
  add_test(NAME ${name} COMMAND lorvane_${name}_test)
  if(NOT arg_LABELS)
    set(arg_LABELS unit)
  endif()
  set_tests_properties(${name} PROPERTIES LABELS "${arg_LABELS}" TIMEOUT 300)
  if("unit" IN_LIST arg_LABELS)
    add_dependencies(unit_suites lorvane_${name}_test)
  endif()
endfunction()

# lorvane_desktop_test(<name> SOURCES ... LINKS ...): runs inside a fresh virtual desktop.
function(lorvane_desktop_test name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINKS" ${ARGN})
  if(NOT BUILD_TESTING)
    return()
  endif()
  add_executable(lorvane_${name}_test ${arg_SOURCES})
  target_link_libraries(lorvane_${name}_test PRIVATE ${arg_LINKS} lorvane_test_main lorvane_warnings)
  add_test(NAME ${name}
    COMMAND ${PROJECT_SOURCE_DIR}/scripts/virtual-desktop -- $<TARGET_FILE:lorvane_${name}_test>)
  set_tests_properties(${name} PROPERTIES LABELS desktop TIMEOUT 600)
endfunction()
