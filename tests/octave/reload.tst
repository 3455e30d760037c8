%!function text = process (file)
%!  text = fileread (fullfile ("/proc/self", file));
%!endfunction

%!function n = threads ()
%!  n = str2double (regexp (process ("status"), 'Threads:\s+(\d+)', "tokens"){1}{1});
%!endfunction

%!function bytes = memory ()
%!  bytes = 1024 * str2double (regexp (process ("status"), 'VmRSS:\s+(\d+)', "tokens"){1}{1});
%!endfunction

%!function is = is_mapped ()
%!  is = ! isempty (strfind (process ("maps"), "pistonfield.mex"));
%!endfunction

%!test # loaded and cleared 200 times: no thread, no mapping and no memory stays
%! N = 30000;   # enough for every core to get work
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
%! # By the hundredth load the C library has set up its memory for workers that run side by side. The
%! # least of some loads, since memory that is free is given back now and then only.
%! growth = min (used(181:200)) - min (used(81:100));
%! assert (growth < 2e6, sprintf ("it grew by %d bytes", growth));   # one call's results and copies take 1.4 MB
%! p = pistonfield (points, 0, 0.01, 0.005, 4188.79);
%! assert (isequal (p, first));

%!test # threads of Octave's own, before, between and after calls, are nobody's trouble
%! points = [zeros(2, 30000); linspace(0.001, 0.05, 30000)];
%! A = reshape (mod (1:360000, 7), 600, 600);
%! product = A * A;
%! first = pistonfield (points, 0, 0.01, 0.005, 4188.79);
%! for n = 1:10
%!   assert (isequal (A * A, product));
%!   assert (isequal (pistonfield (points, 0, 0.01, 0.005, 4188.79), first));
%! endfor

%!test # processes forked after a call compute what their parent does
%! points = [zeros(2, 30000); linspace(0.001, 0.05, 30000)];
%! first = pistonfield (points, 0, 0.01, 0.005, 4188.79);
%! children = [];
%! for n = 1:3
%!   children(n) = fork ();
%!   if (children(n) == 0)
%!     same = isequal (pistonfield (points, 0, 0.01, 0.005, 4188.79), first);
%!     exec ("/bin/sh", {"-c", sprintf("exit %d", ! same)});   # ends it without the parent's exit
%!   endif
%! endfor
%! for child = children
%!   [~, status] = waitpid (child);
%!   assert (status, 0);
%! endfor
