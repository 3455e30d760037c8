%!function text = process (file)
%!  text = fileread (fullfile ("/proc/self", file));
%!endfunction

%!function number = status (name)
%!  number = str2double (regexp (process ("status"), [name, ':\s+(\d+)'], "tokens"){1}{1});
%!endfunction

%!function check_reloads (module, name, varargin)
%!  is_mapped = @() ! isempty (strfind (process ("maps"), [module, ".mex"]));
%!  first = feval (name, varargin{:});
%!  before = status ("Threads");
%!  for n = 1:200
%!    assert (isequal (feval (name, varargin{:}), first));
%!    assert (is_mapped ());
%!    clear ("-f", module);
%!    assert (! is_mapped ());
%!    assert (status ("Threads"), before);
%!    used(n) = 1024 * status ("VmRSS");
%!  endfor
%!  # By the hundredth load, the C library has set up its memory pools for parallel threads. Takes the minimum
%!  # over several loads, since free memory is returned to the system only occasionally.
%!  growth = min (used(181:200)) - min (used(81:100));
%!  assert (growth < 2e6, sprintf ("it grew by %d bytes", growth));   # one call's results and copies take 1.4 MB
%!  assert (isequal (feval (name, varargin{:}), first));
%!endfunction

%!shared points
%! points = [linspace(-0.02, 0.02, 30000); zeros(1, 30000); linspace(0.001, 0.05, 30000)];   # enough work for every core

%!test # after 200 loads and clears, no thread, mapping or memory is left
%! check_reloads ("pistonfield", "pistonfield", points, 0, 0.01, 0.005, 4188.79);

%!test # the same for the module behind pistongrid
%! x = linspace (-0.02, 0.03, 200);
%! check_reloads ("pistonfield_pressure", "pistongrid", x, 0, linspace (0.001, 0.05, 150), 0.01, 0.005, 4188.79);

%!test # processes forked after a call compute what their parent does
%! first = pistonfield (points, 0, 0.01, 0.005, 4188.79);
%! children = [];
%! for n = 1:3
%!   children(n) = fork ();
%!   if (children(n) == 0)
%!     same = isequal (pistonfield (points, 0, 0.01, 0.005, 4188.79), first);
%!     exec ("/bin/sh", {"-c", sprintf("exit %d", ! same)});   # ends the process without the parent's exit handlers
%!   endif
%! endfor
%! for child = children
%!   [~, status_] = waitpid (child);
%!   assert (status_, 0);
%! endfor
