# Makes mistakes in what is built with optimisation harder to exploit. Sanitizers, which look for the
# same mistakes, and GPU code go without.

include(CheckCXXCompilerFlag)
include(CheckPIESupported)

check_pie_supported() # for programs to be linked as position-independent, too
if(NOT CMAKE_CXX_COMPILER_ID MATCHES "^(GNU|Clang|AppleClang)$" OR PISTONFIELD_SANITIZE)
  return()
endif()

# Distributions set a level of their own. The standard library's assertions are left to the builds that
# look for mistakes: with them a module needs a library as new as the compiler, which hosts may lack.
set(hardening -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
check_cxx_compiler_flag(-fcf-protection has_cf_protection) # x86 alone
if(has_cf_protection)
  list(APPEND hardening -fcf-protection)
endif()
add_compile_options(
  "$<$<AND:$<COMPILE_LANGUAGE:CXX>,$<CONFIG:Release,RelWithDebInfo,MinSizeRel>>:${hardening}>")

if(NOT APPLE)
  add_link_options(LINKER:-z,relro,-z,now,-z,noexecstack)
endif()
