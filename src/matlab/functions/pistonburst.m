% PISTONBURST  Some cycles of a sine under a window, as the velocity of a pulse.
%
%   excitation = pistonburst (f, cycles, rate)
%   excitation = pistonburst (f, cycles, rate, window)
%
% Returns the excitation that pistonpulse and pistonecho take:
%
%   v(t) = w(t) * sin (2 pi f t),  0 <= t <= cycles / f
%
% Arguments
%
%   f           frequency, positive.
%   cycles      how many, positive, at most 1e4; 2.5 are two and a half.
%   rate        samples per unit of time, from 8 * f to 1e4 * f.  20 * f or more is common.
%   window      w: 'hann', 'rectangular', 'hamming', 'tukey' or 'gauss', as in
%               pistonapodization, with the default parameter.  Default: 'hann', w = sin (pi f t / cycles) ^ 2.
%
% Result
%
%   excitation  a struct: samples, a column of values of v; rate; and start, the time of the
%               first sample.
%
% Example: two cycles at 5 MHz, 100 samples per microsecond
%
%   excitation = pistonburst (5e6, 2, 100e6);
%   t = excitation.start + (0:numel (excitation.samples) - 1) / excitation.rate;
%   plot (t * 1e6, excitation.samples);
%   xlabel ('t in \mus');
%
% Errors: "f must be ...", "cycles must be ...", "rate must be ..." and "window must be ...".
%
% See also: pistongauss, pistonpulse, pistonecho.

function excitation = pistonburst (f, cycles, rate, window)

  if (nargin < 3)
    error ('pistonburst:arguments', ...
           'Too few arguments. Call it as excitation = pistonburst (f, cycles, rate).');
  end
  if (nargin < 4)
    window = 'hann';
  end
  excitation = fromlibrary ('pistonburst', 'burst', f, cycles, rate, window);

end

%!test # a sine under each window, from 0 to cycles / f
%! windows = {"hann", @(u) cos(pi * u / 2) .^ 2; "rectangular", @(u) ones (size (u)); ...
%!            "hamming", @(u) 0.54 + 0.46 * cos (pi * u); "gauss", @(u) exp(-(2.5 * u) .^ 2 / 2); ...
%!            "tukey", @(u) cos(pi * max (0, abs (u) - 0.5)) .^ 2};
%! for n = 1:rows (windows)
%!   for cycles = [0.5, 2, 2.5]
%!     e = pistonburst (3, cycles, 90, windows{n,1});
%!     assert (fieldnames (e), {"samples"; "rate"; "start"});
%!     assert ([e.start, e.rate], [0, 90]);
%!     assert (numel (e.samples), 30 * cycles + 1);
%!     assert (columns (e.samples), 1);
%!     t = (0:30 * cycles)' / 90;
%!     inside = t < t(end) * (1 - 1e-12);     # a window ends on either side of its last sample
%!     v = windows{n,2}(2 * t * 3 / cycles - 1) .* sin (2 * pi * 3 * t);
%!     assert (e.samples(inside), v(inside), 1e-14);
%!   endfor
%! endfor
%! assert (pistonburst (3, 2, 90), pistonburst (3, 2, 90, "hann"));
%!error <excitation = pistonburst> pistonburst (1, 2)
%!error <f must be> pistonburst (0, 2, 10)
%!error <f must be> pistonburst ("1", 2, 10)
%!error <cycles must be> pistonburst (1, 0, 10)
%!error <cycles must be> pistonburst (1, 1.1e4, 10)
%!error <cycles must be> pistonburst (1, [1, 2], 10)
%!error <rate must be> pistonburst (1, 2, 7.9)
%!error <rate must be> pistonburst (1, 2, Inf)
%!error <window must be> pistonburst (1, 2, 10, "square")
%!error <window must be> pistonburst (1, 2, 10, 3)
%!error id=pistonburst:f pistonburst (-1, 2, 10)
%!demo
%! excitation = pistonburst (5e6, 2, 100e6);
%! t = excitation.start + (0:numel (excitation.samples) - 1) / excitation.rate;
%! plot (t * 1e6, excitation.samples);
%! xlabel ('t in \mus');
