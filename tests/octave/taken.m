% The memory that Octave takes at the most while it runs the code, in bytes, in a process of its own that
% has run the setup, which loads all that is loaded once.
function bytes = taken (setup, code)
  folder = fileparts (which ("pistonfield"));
  peak = "peak = @() 1024 * str2double (regexp (fileread ('/proc/self/status'), 'VmHWM:\\s+(\\d+)', 'tokens'){1}{1});";
  command = sprintf ("octave-cli --no-history --norc --quiet --eval \"addpath ('%s'); %s %s before = peak (); %s fprintf (stderr, '%%d', peak () - before);\" 2>&1 >/dev/null", ...
                     folder, peak, setup, code);
  [status, text] = system (command);
  assert (status, 0);
  bytes = str2double (text);
endfunction
