%!function [now, peak] = memory_in_use ()
%!  status = fileread ("/proc/self/status");
%!  bytes = @(name) 1024 * str2double (regexp (status, [name ':\s+(\d+)'], "tokens"){1}{1});
%!  now = bytes ("VmRSS");
%!  peak = bytes ("VmHWM");
%!endfunction

%!test # a million points work and take at most 100 bytes each beyond the arguments
%! N = 1e6;
%! points = [linspace(-0.02, 0.02, N); zeros(1, N); linspace(0.001, 0.05, N)];
%! few = pistonfield (points(:,1:1000:end), 0, 0.01, 0.005, 4188.79);
%! [before, peak_before] = memory_in_use ();
%! p = pistonfield (points, 0, 0.01, 0.005, 4188.79);
%! [~, peak] = memory_in_use ();
%! taken = (peak - before) / N;
%! printf ("%.1f bytes a point\n", taken);
%! assert (peak > peak_before);   # or what had been freed hid what the call took
%! assert (taken <= 100);
%! assert (size (p), [N 1]);
%! assert (p(1:1000:end), few);
