%!function bytes = peak_memory ()
%!  status = fileread ("/proc/self/status");
%!  bytes = 1024 * str2double (regexp (status, 'VmHWM:\s+(\d+)', "tokens"){1}{1});
%!endfunction

%!test # a million points work and take at most 100 bytes each beyond the arguments
%! N = 1e6;
%! points = [linspace(-0.02, 0.02, N); zeros(1, N); linspace(0.001, 0.05, N)];
%! few = pistonfield (points(:,1:1000:end), 0, 0.01, 0.005, 4188.79);
%! before = peak_memory ();
%! p = pistonfield (points, 0, 0.01, 0.005, 4188.79);
%! taken = (peak_memory () - before) / N;
%! printf ("%.1f bytes a point\n", taken);
%! assert (taken > 0);   # or the peak before the call hid the call's own
%! assert (taken <= 100);
%! assert (size (p), [N 1]);
%! assert (p(1:1000:end), few);
