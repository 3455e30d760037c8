% Installs the packages that the build requires, or reports what is missing. pkg calls this function before
% it looks for a compiler.
%
% If the installation requires sudo, the function asks first. The preference
%
%   setpref ("pistonfield", "use_sudo", false)
%
% answers no beforehand, and true answers yes. Without the preference and without a terminal the answer is no.
function pre_install (desc)

  command = in_setup ("sudo_command", desc);
  if (! isempty (command) && ! may_run (command))
    error (["%s %s could not be installed: building it requires packages that are missing. " ...
            "Install them with\n  %s\nand repeat, or allow sudo: " ...
            "setpref (\"pistonfield\", \"use_sudo\", true)"],
           desc.name, desc.version, command);
  endif
  in_setup ("install_missing", desc);

endfunction

function yes = may_run (command)

  if (ispref ("pistonfield", "use_sudo"))
    yes = getpref ("pistonfield", "use_sudo");
  elseif (isguirunning () || system ("test -t 0") == 0)
    answer = input (sprintf (["Building this requires packages that are missing:\n  %s\n" ...
                              "Run this command? (y/n) "], command), "s");
    yes = any (strcmpi (strtrim (answer), {"y", "yes"}));
  else
    yes = false;
  endif

endfunction

% Calls a function of the script setup and returns its standard output. The output of install_missing is
% shown while it runs, and its standard error becomes the text of the error.
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
