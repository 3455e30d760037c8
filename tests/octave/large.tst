%!function bytes = taken (points) # the peak memory of a call, measured in a separate process
%!  folder = fileparts (which ("pistonfield"));
%!  peak = "peak = @() 1024 * str2double (regexp (fileread ('/proc/self/status'), 'VmHWM:\\s+(\\d+)', 'tokens'){1}{1});";
%!  call = "p = pistonfield (points, 0, 0.01, 0.005, 4188.79);";
%!  few = ["points = [0; 0; 0.01]; " call]; # loads everything that is loaded only once
%!  many = sprintf ("points = zeros (3, %d); points(3,:) = 0.01; before = peak (); ", points);
%!  command = sprintf ("octave-cli --no-history --norc --quiet --eval \"addpath ('%s'); %s %s %s %s fprintf (stderr, '%%d', peak () - before);\" 2>&1 >/dev/null", ...
%!                     folder, peak, few, many, call);
%!  [status, text] = system (command);
%!  assert (status, 0);
%!  bytes = str2double (text);
%!endfunction

%!test # besides its arguments, a call takes memory for its result, as computed and as returned to Octave, and little more per core
%! for points = [1e5, 5e5, 1e6, 3e6, 1e7]
%!   bytes = taken (points);
%!   printf ("%d points: %.1f bytes each\n", points, bytes / points);
%!   assert (bytes > 16 * points && bytes <= 40 * points + 2 ^ 18 * nproc ());
%! endfor

%!test # a million points give the same values as a few
%! N = 1e6;
%! points = [linspace(-0.02, 0.02, N); zeros(1, N); linspace(0.001, 0.05, N)];
%! p = pistonfield (points, 0, 0.01, 0.005, 4188.79);
%! assert (size (p), [N 1]);
%! assert (p(1:1000:end), pistonfield (points(:,1:1000:end), 0, 0.01, 0.005, 4188.79));
