% Installs what building takes, or says what is missing. pkg calls it before it looks for a compiler.
function pre_install (desc)

  % What is installed is told at once; what goes wrong becomes the error.
  command = ["bash -c 'set -euo pipefail; . ./setup; install_missing \"${package_tools[@]}\"' " ...
             "3>&2 2>&1 1>&3 3>&-"];
  [status, said] = system (command);
  if (status != 0)
    error ("%s %s could not be installed.\n%s", desc.name, desc.version, said);
  endif

endfunction
