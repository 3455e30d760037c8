% PISTONPEAKS  Peak positive and peak negative pressure of pulses.
%
%   [positive, negative] = pistonpeaks (p)
%
% Both are magnitudes: max (p) and max (-p) over time, and at least 0, because before and
% after the pulse the pressure is 0.
%
% Argument
%
%   p           real pressures against time: a vector, or an array whose rows are the times,
%               with a column for each point.
%
% Result
%
%   positive    peak positive pressures, a row with a number for each column: double.  An
%               array of more dimensions has 1 as its first size.
%   negative    peak negative pressures, of the same shape.
%
% The peaks are those of the samples.  A sine of the frequency f, sampled n times in a period,
% can exceed them by pi ^ 2 / (2 n ^ 2): 2 % with 16 samples.  A NaN in a column makes both of
% its peaks NaN.
%
% Example: a pulse of two cycles
%
%   t = linspace (0, 2e-6, 401);
%   p = 1e5 * sin (2 * pi * 1e6 * t) .* sin (pi * t / 2e-6) .^ 2;
%   [positive, negative] = pistonpeaks (p);
%
% Errors: "p must be real pressures against time."
%
% See also: pistonpascals, pistonbeam.

function [positive, negative] = pistonpeaks (p)

  if (nargin < 1)
    error ('pistonpeaks:arguments', ...
           'Too few arguments. Call it as [positive, negative] = pistonpeaks (p).');
  end
  if (~ isnumeric (p) || ~ isreal (p) || isempty (p))
    error ('pistonpeaks:p', 'p must be real pressures against time.');
  end
  p = full (double (p));
  if (isvector (p))
    p = p(:);
  end
  unknown = any (isnan (p), 1);
  positive = max (max (p, [], 1), 0);
  negative = max (max (-p, [], 1), 0);
  positive(unknown) = NaN;
  negative(unknown) = NaN;

end

%!test # sines, whose samples include their peaks
%! t = (0:64)' / 16;
%! [positive, negative] = pistonpeaks (sin (2 * pi * t) * [1, 5] + [0, 2]);
%! assert (positive, [1, 7], 1e-14);
%! assert (negative, [1, 3], 1e-14);
%!test # samples of a sine fall short of its peak by at most 1 - cos (pi / n)
%! for n = [8, 16, 50]
%!   t = (0:10*n)' / n;
%!   [positive, negative] = pistonpeaks (sin (2 * pi * (t + (0:30) / (31 * n))));
%!   assert (all ([positive, negative] <= 1 & [positive, negative] >= cos (pi / n) - 1e-12));
%! endfor
%!test # pressures of one sign, vectors, other shapes and classes
%! [positive, negative] = pistonpeaks ([1, 3, 2]);
%! assert ([positive, negative], [3, 0]);
%! [positive, negative] = pistonpeaks (-single ([1; 3; 2]));
%! assert ([positive, negative], [0, 3]);
%! assert (class (positive), "double");
%! [positive, negative] = pistonpeaks (rand (5, 3, 2) - 0.5);
%! assert ([size(positive); size(negative)], [1, 3, 2; 1, 3, 2]);
%! [positive, negative] = pistonpeaks (int8 ([-128; 5]));
%! assert ([positive, negative], [5, 128]);
%!test # NaN
%! [positive, negative] = pistonpeaks ([1, 1; NaN, -2; 3, 0]);
%! assert (positive, [NaN, 1]);
%! assert (negative, [NaN, 2]);
%!error <Call it as \[positive, negative\] = pistonpeaks> pistonpeaks ()
%!error <p must be real pressures against time> pistonpeaks ([1, 1i])
%!error <p must be real pressures against time> pistonpeaks ([])
%!error <p must be real pressures against time> pistonpeaks ("sound")
