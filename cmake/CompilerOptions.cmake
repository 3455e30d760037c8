# Compiler options of the whole project. The presets turn warnings into errors.

set(gnu_like $<COMPILE_LANG_AND_ID:CXX,GNU,Clang,AppleClang>)

# The promised digits must not depend on whether a machine has fused multiply-add. No code reads errno.
add_compile_options($<${gnu_like}:-ffp-contract=off> $<${gnu_like}:-fno-math-errno>)

add_compile_options(
  "$<${gnu_like}:-Wall;-Wextra;-Wconversion;-Wshadow>"
  "$<$<COMPILE_LANGUAGE:CUDA>:-Xcompiler=-Wall,-Wextra>")

# Prints the registers and the memory that each kernel uses.
add_compile_options($<$<COMPILE_LANGUAGE:CUDA>:--resource-usage>)

set(PISTONFIELD_SANITIZE "" CACHE STRING "Sanitizers to build everything with, as for -fsanitize=")
if(PISTONFIELD_SANITIZE)
  add_compile_options(-fsanitize=${PISTONFIELD_SANITIZE} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer -D_GLIBCXX_ASSERTIONS)
  # g++ reports false positives in its own headers when they are instrumented.
  add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  add_link_options(-fsanitize=${PISTONFIELD_SANITIZE})
endif()

include(Hardening)
