# How our own code is compiled. Libraries of others are included as system headers.
add_library(zx_compile INTERFACE)
target_compile_options(zx_compile INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
  -Wfloat-conversion -Wundef
  # GCC 12 sees overlaps in the concatenation of strings that cannot be.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  # The same bytes on every machine: a fused multiply-add rounds once where the plain code rounds twice.
  -ffp-contract=off)

if(ZX_SANITIZE)
  add_compile_options(-fsanitize=${ZX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${ZX_SANITIZE})
  if(ZX_SANITIZE STREQUAL "thread")
    # oneTBB as packaged is not instrumented and drowns the thread sanitizer in reports.
    add_compile_definitions(ZX_SERIAL_KERNELS)
  endif()
endif()
