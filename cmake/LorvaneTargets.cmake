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

# lorvane_desktop_test(<name> SOURCES ... LINKS ... [SESSION <kind>] [INPUT_METHOD <name>]): runs inside a fresh virtual
# desktop, of that kind of session (scripts/virtual-desktop --session), else x11.
function(lorvane_desktop_test name)
  cmake_parse_arguments(arg "" "SESSION;INPUT_METHOD" "SOURCES;LINKS" ${ARGN})
  if(NOT BUILD_TESTING)
    return()
  endif()
  if(arg_SESSION)
    set(arg_SESSION --session ${arg_SESSION})
  endif()
  if(arg_INPUT_METHOD)
    list(APPEND arg_SESSION --input-method ${arg_INPUT_METHOD})
  endif()
  add_executable(lorvane_${name}_test ${arg_SOURCES})
  target_link_libraries(lorvane_${name}_test PRIVATE ${arg_LINKS} lorvane_test_main lorvane_warnings)
  add_test(NAME ${name}
    COMMAND ${PROJECT_SOURCE_DIR}/scripts/virtual-desktop ${arg_SESSION} -- $<TARGET_FILE:lorvane_${name}_test>)
  set_tests_properties(${name} PROPERTIES LABELS desktop TIMEOUT 600)
endfunction()

# Everything of a folder and below it that is built by default and no suite on virtual time: what is left to build where
# those run with sanitizers anyway. A suite with the property LORVANE_PLAIN_TOO is built all the same.
function(lorvane_collect_but_unit folder found)
  get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
  get_property(below DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
  get_target_property(unit unit_suites MANUALLY_ADDED_DEPENDENCIES)
  set(wanted ${${found}})
  foreach(target IN LISTS targets)
    get_target_property(type ${target} TYPE)
    get_target_property(plain ${target} LORVANE_PLAIN_TOO)
    if(type MATCHES "EXECUTABLE|LIBRARY" AND (plain OR NOT target IN_LIST unit))
      list(APPEND wanted ${target})
    endif()
  endforeach()
  foreach(inner IN LISTS below)
    lorvane_collect_but_unit(${inner} wanted)
  endforeach()
  set(${found} ${wanted} PARENT_SCOPE)
endfunction()
