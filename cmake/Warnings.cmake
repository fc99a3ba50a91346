# Warnings for our own code only; they are errors everywhere, so that a warning never lands.
option(LORVANE_WERROR "Treat warnings as errors" ON)
add_library(lorvane_warnings INTERFACE)
target_compile_options(lorvane_warnings INTERFACE
  -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wunused -Wnull-dereference
  -Wduplicated-cond -Wlogical-op -Wformat=2 -Wimplicit-fallthrough
  # With its optimiser on, gcc 12 sees null pointers inside the standard library's own trees.
  $<$<CONFIG:Release>:-Wno-null-dereference>
  $<$<BOOL:${LORVANE_WERROR}>:-Werror>)
