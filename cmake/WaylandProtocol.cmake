# Protocol descriptions, in the order in which they are looked for: our own, then those of the distribution.
file(GLOB LORVANE_CARGO_PROTOCOLS "/usr/share/cargo/registry/wayland-protocols-*/protocols"
  "/usr/share/cargo/registry/wayland-protocols-*/wlr-protocols" "/usr/share/cargo/registry/wayland-protocols-*/misc")
set(LORVANE_PROTOCOL_FOLDERS ${PROJECT_SOURCE_DIR}/src/platform/linux/wayland/protocols
  /usr/share/wayland-protocols /usr/share/plasma-wayland-protocols ${LORVANE_CARGO_PROTOCOLS})

# lorvane_wayland_protocol(<target> <file.xml>...): the client code of a protocol, made while building, linked to
# the target; the header is <file-client-protocol.h>. The file is found by its name in the folders above. Several
# targets may ask for the same one: it is made once.
function(lorvane_wayland_protocol target)
  foreach(name ${ARGN})
    get_filename_component(stem ${name} NAME_WE)
    if(NOT TARGET lorvane_protocol_${stem})
      lorvane_protocol_library(${stem} ${name})
    endif()
    target_link_libraries(${target} PUBLIC lorvane_protocol_${stem})
  endforeach()
endfunction()

function(lorvane_protocol_library stem name)
  set(found)
  foreach(folder ${LORVANE_PROTOCOL_FOLDERS})
    file(GLOB_RECURSE found ${folder}/${name})
    if(found)
      list(GET found 0 found)
      break()
    endif()
  endforeach()
  if(NOT found)
    message(FATAL_ERROR "no description of the Wayland protocol ${name}; scripts/install-packages brings them")
  endif()
  find_program(WAYLAND_SCANNER wayland-scanner REQUIRED)
  set(made ${CMAKE_BINARY_DIR}/wayland/${stem})
  file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/wayland)
  add_custom_command(OUTPUT ${made}-client-protocol.h DEPENDS ${found}
    COMMAND ${WAYLAND_SCANNER} --strict client-header ${found} ${made}-client-protocol.h)
  add_custom_command(OUTPUT ${made}-protocol.c DEPENDS ${found}
    COMMAND ${WAYLAND_SCANNER} --strict private-code ${found} ${made}-protocol.c)
  pkg_check_modules(WaylandClient REQUIRED QUIET IMPORTED_TARGET wayland-client)
  add_library(lorvane_protocol_${stem} STATIC ${made}-protocol.c ${made}-client-protocol.h)
  set_target_properties(lorvane_protocol_${stem} PROPERTIES AUTOMOC OFF AUTORCC OFF)
  target_include_directories(lorvane_protocol_${stem} SYSTEM PUBLIC ${CMAKE_BINARY_DIR}/wayland)
  target_link_libraries(lorvane_protocol_${stem} PUBLIC PkgConfig::WaylandClient)
endfunction()
