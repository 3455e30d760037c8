# How everything is compiled. Presets turn warnings into errors.

set(gnu_like $<COMPILE_LANG_AND_ID:CXX,GNU,Clang,AppleClang>)

# Digits that are promised must not depend on a machine's fused multiply-add; nobody reads errno.
add_compile_options($<${gnu_like}:-ffp-contract=off> $<${gnu_like}:-fno-math-errno>)

add_compile_options(
  "$<${gnu_like}:-Wall;-Wextra;-Wconversion;-Wshadow>"
  "$<$<COMPILE_LANGUAGE:CUDA>:-Xcompiler=-Wall,-Wextra>")

# What each kernel takes of a multiprocessor stands in the build's report.
add_compile_options($<$<COMPILE_LANGUAGE:CUDA>:--resource-usage>)

set(PISTONFIELD_SANITIZE "" CACHE STRING "Sanitizers to build everything with, as for -fsanitize=")
if(PISTONFIELD_SANITIZE)
  add_compile_options(-fsanitize=${PISTONFIELD_SANITIZE} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer -D_GLIBCXX_ASSERTIONS)
  # g++ sees things in its own headers once they are instrumented.
  add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  add_link_options(-fsanitize=${PISTONFIELD_SANITIZE})
endif()

include(Hardening)
