# Warnings for our own code only; they are errors everywhere, so that a warning never lands.
option(LORVANE_WERROR "Treat warnings as errors" ON)
add_library(lorvane_warnings INTERFACE)
target_compile_options(lorvane_warnings INTERFACE
  -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wunused -Wnull-dereference
  -Wduplicated-cond -Wlogical-op -Wformat=2 -Wimplicit-fallthrough
  $<$<BOOL:${LORVANE_WERROR}>:-Werror>)
