# Makes memory errors in optimised builds harder to exploit. Sanitizer builds, which detect the same
# errors, and GPU code are not hardened.

include(CheckCXXCompilerFlag)
include(CheckPIESupported)

check_pie_supported() # so that programs are also linked as position-independent
if(NOT CMAKE_CXX_COMPILER_ID MATCHES "^(GNU|Clang|AppleClang)$" OR PISTONFIELD_SANITIZE)
  return()
endif()

# Distributions preset their own _FORTIFY_SOURCE level. The standard library's assertions are enabled in
# sanitizer builds only: they need a library as new as the compiler, which hosts may not have.
set(hardening -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
check_cxx_compiler_flag(-fcf-protection has_cf_protection) # x86 only
if(has_cf_protection)
  list(APPEND hardening -fcf-protection)
endif()
add_compile_options(
  "$<$<AND:$<COMPILE_LANGUAGE:CXX>,$<CONFIG:Release,RelWithDebInfo,MinSizeRel>>:${hardening}>")

if(NOT APPLE)
  add_link_options(LINKER:-z,relro,-z,now,-z,noexecstack)
endif()
