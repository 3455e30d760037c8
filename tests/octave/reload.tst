%!function text = process (file)
%!  text = fileread (fullfile ("/proc/self", file));
%!endfunction

%!function n = threads ()
%!  n = str2double (regexp (process ("status"), 'Threads:\s+(\d+)', "tokens"){1}{1});
%!endfunction

%!function bytes = memory ()
%!  bytes = 1024 * str2double (regexp (process ("status"), 'VmRSS:\s+(\d+)', "tokens"){1}{1});
%!endfunction

%!function is = is_mapped (name = "pistonfield")
%!  is = ! isempty (strfind (process ("maps"), [name, ".mex"]));
%!endfunction

%!test # after 200 loads and clears, no thread, mapping or memory is left
%! N = 30000;   # enough work for every core
%! points = [linspace(-0.02, 0.02, N); zeros(1, N); linspace(0.001, 0.05, N)];
%! first = pistonfield (points, 0, 0.01, 0.005, 4188.79);
%! before = threads ();
%! for n = 1:200
%!   p = pistonfield (points, 0, 0.01, 0.005, 4188.79);
%!   assert (isequal (p, first));
%!   assert (is_mapped ());
%!   clear pistonfield
%!   assert (! is_mapped ());
%!   assert (threads (), before);
%!   used(n) = memory ();
%! endfor
%! # By the hundredth load, the C library has set up its memory pools for parallel threads. Takes the minimum
%! # over several loads, since free memory is returned to the system only occasionally.
%! growth = min (used(181:200)) - min (used(81:100));
%! assert (growth < 2e6, sprintf ("it grew by %d bytes", growth));   # one call's results and copies take 1.4 MB
%! p = pistonfield (points, 0, 0.01, 0.005, 4188.79);
%! assert (isequal (p, first));

%!test # the same for the module behind pistongrid
%! grid_ = {linspace(-0.02, 0.03, 200), 0, linspace(0.001, 0.05, 150), 0.01, 0.005, 4188.79};
%! first = pistongrid (grid_{:});
%! before = threads ();
%! for n = 1:200
%!   assert (pistongrid (grid_{:}), first);
%!   assert (is_mapped ("pistonfield_pressure"));
%!   clear pistonfield_pressure
%!   assert (! is_mapped ("pistonfield_pressure"));
%!   assert (threads (), before);
%!   used(n) = memory ();
%! endfor
%! growth = min (used(181:200)) - min (used(81:100));
%! assert (growth < 2e6, sprintf ("it grew by %d bytes", growth));
%! assert (pistongrid (grid_{:}), first);

%!test # processes forked after a call compute what their parent does
%! points = [zeros(2, 30000); linspace(0.001, 0.05, 30000)];
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
%!   [~, status] = waitpid (child);
%!   assert (status, 0);
%! endfor
