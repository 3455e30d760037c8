% Installs what building takes, or says what is missing. pkg calls it before it looks for a compiler.
%
% Where that takes sudo it asks first. The preference
%
%   setpref ("pistonfield", "use_sudo", false)
%
% says no, and true says yes, once and for all; where nobody can answer and there is none, it is no.
function pre_install (desc)

  command = in_setup ("sudo_command", desc);
  if (! isempty (command) && ! may_run (command))
    error (["%s %s could not be installed: building it takes packages that are missing. Install them by\n" ...
            "  %s\nand then this again, or let it run that: setpref (\"pistonfield\", \"use_sudo\", true)"],
           desc.name, desc.version, command);
  endif
  in_setup ("install_missing", desc);

endfunction

function yes = may_run (command)

  if (ispref ("pistonfield", "use_sudo"))
    yes = getpref ("pistonfield", "use_sudo");
  elseif (isguirunning () || system ("test -t 0") == 0)
    answer = input (sprintf ("Building this takes packages that are missing:\n  %s\nRun that? (y/n) ", ...
                             command), "s");
    yes = any (strcmpi (strtrim (answer), {"y", "yes"}));
  else
    yes = false;
  endif

endfunction

% What the function of the script setup prints on standard output, which is shown while it runs but for a
% command; what goes wrong becomes the error.
function text = in_setup (name, desc)

  call = ["bash -c 'set -euo pipefail; . ./setup; sudo=(sudo); " name " \"${package_tools[@]}\"'"];
  if (strcmp (name, "install_missing"))
    call = [call " 3>&2 2>&1 1>&3 3>&-"];
  endif
  [status, text] = system (call);
  if (status != 0)
    error ("%s %s could not be installed.\n%s", desc.name, desc.version, text);
  endif
  text = strtrim (text);

endfunction
