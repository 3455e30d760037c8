# pistonfield_hide_symbols(<target> <map>) exports only the symbols of the map and binds them to the library
# itself, so that the symbols of the libraries in a process never mix.
function(pistonfield_hide_symbols target map)
  if(UNIX AND NOT APPLE)
    # -Wl would split a path at its commas.
    target_link_options(${target} PRIVATE "SHELL:-Xlinker \"--version-script=${map}\"" -Wl,-Bsymbolic)
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${map})
  endif()
endfunction()
