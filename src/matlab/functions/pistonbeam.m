% PISTONBEAM  Peak, place and width of the beam in a field along a line.
%
%   beam = pistonbeam (x, p)
%   beam = pistonbeam (x, p, drop)
%
% Arguments
%
%   x           positions along the line, two or more in increasing order: across the beam
%               for its width, along the beam for the length of a focus.
%   p           pressures: numel (x) of them, or an array whose first dimension is along x.
%               With the result of pistongrid (x, 0, z, ...), there is a beam for each z.
%   drop        in decibels.  Default: 6, which is a factor of 10 ^ (-6 / 20) = 0.501 in
%               magnitude.  20 * log10 (2) is a factor of exactly 1/2.
%
% Result
%
%   beam        a struct of double arrays, of the shape of p but with 1 as the first size:
%     peak      largest magnitude
%     position  where it is
%     width     right - left
%     left      the edges: the places nearest to the peak on both sides where the magnitude
%     right     has dropped.  NaN, as is the width, if it does not drop within x
%
% The peak is interpolated by the parabola through the largest sample and its neighbours,
% unless it is at an end of x or one neighbour is more than twice as far as the other.  The
% edges are interpolated linearly.  So errors fall with the square of the step.  The width at
% -6 dB of the main lobe of a uniform aperture, or of a Gaussian, is accurate to 3 % with 3
% steps in it, 0.8 % with 6, and 0.2 % with 12.  A line with a pressure that is NaN or infinite
% has NaN everywhere.
%
% Example: the width of a beam against depth
%
%   x = linspace (-20e-3, 20e-3, 201);
%   z = linspace (10e-3, 100e-3, 91);
%   beam = pistonbeam (x, pistongrid (x, 0, z, 11e-3, 7.5e-3, 2 * pi / 1.5e-3));
%   plot (z * 1e3, squeeze (beam.width) * 1e3);
%
% Errors: "x must be two or more finite real numbers in increasing order."; "p must be one number for
% each of x, or an array whose first dimension is along x."; "drop must be a positive number of
% decibels."
%
% See also: pistongrid, pistonarray, pistonpascals, pistonpeaks.

function beam = pistonbeam (x, p, drop)

  if (nargin < 2)
    error ('pistonbeam:arguments', 'Too few arguments. Call it as beam = pistonbeam (x, p).');
  end
  if (nargin < 3)
    drop = 6;
  end
  if (isnumeric (p) && isvector (p))
    p = p(:);
  end
  if (~ isnumeric (p) || size (p, 1) ~= numel (x))
    error ('pistonbeam:p', ...
           'p must be one number for each of x, or an array whose first dimension is along x.');
  end
  shape = size (p);
  p = reshape (full (double (p)), shape(1), prod (shape(2:end)));
  numbers = fromlibrary ('pistonbeam', 'beams', x, p, drop);
  shape(1) = 1;
  names = {'peak', 'position', 'width', 'left', 'right'};
  for n = 1:numel (names)
    beam.(names{n}) = reshape (numbers(n,:), shape);
  end

end

%!function check (actual, expected, tolerance)
%!  assert (abs (actual / expected - 1) <= tolerance, "%g, not %g", actual, expected);
%!endfunction

%!shared half
%! half = 20 * log10 (2);
%!test # Gaussian, Lorentzian and sinc with their samples anywhere, at three drops
%! shapes = {@(x) exp(-x .^ 2), @(x) 1 ./ (1 + x .^ 2), @(x) sin(pi * (x + (x == 0) * 1e-9)) ./ (pi * (x + (x == 0) * 1e-9))};
%! for drop = [3, 6, 12]
%!   level = 10 ^ (-drop / 20);
%!   halves = [sqrt(-log (level)), sqrt(1 / level - 1), fzero(@(x) shapes{3}(x) - level, [0.1, 0.95])];
%!   for n = 1:3
%!     for shift = linspace (-0.5, 0.5, 11)
%!       x = ((-400:400) + shift) * halves(n) * 2 / 60;
%!       beam = pistonbeam (x + 3, 5i * shapes{n}(x), drop);
%!       check (beam.width, 2 * halves(n), 4e-4);
%!       check (beam.peak, 5, 1e-5);
%!       assert (beam.position, 3, 1e-3 * halves(n));
%!       assert ([beam.left, beam.right], 3 + [-1, 1] * halves(n), 1e-3 * halves(n));
%!     endfor
%!   endfor
%! endfor
%!test # the stated accuracy of widths at -6 dB
%! shapes = {@(x) exp(-x .^ 2), @(x) sin(pi * (x + (x == 0) * 1e-9)) ./ (pi * (x + (x == 0) * 1e-9))};
%! halves = [sqrt(-log (10 ^ -0.3)), fzero(@(x) shapes{2}(x) - 10 ^ -0.3, [0.1, 0.95])];
%! for stated = [3, 6, 12; 0.03, 0.008, 0.002]
%!   for n = 1:2
%!     for shift = linspace (-0.5, 0.5, 101)
%!       x = ((-40:40) + shift) * 2 * halves(n) / stated(1);
%!       check (pistonbeam (x, shapes{n}(x)).width, 2 * halves(n), stated(2));
%!     endfor
%!   endfor
%! endfor
%!test # a parabola's peak and a polygon's edges are exact
%! x = [-3, -2, -0.5, 0.25, 1, 4];
%! assert (pistonbeam (x, 9 - (x - 0.125) .^ 2 / 4).position, 0.125, 1e-15);
%! assert (pistonbeam (x, 9 - (x - 0.125) .^ 2 / 4).peak, 9, 1e-14);
%! beam = pistonbeam (0:4, [0, 1, 2, 1, 0.5], half);
%! assert ([beam.peak, beam.position, beam.left, beam.right, beam.width], [2, 2, 1, 3, 2], 1e-14);
%!test # the numbers of C++ and Python
%! beam = pistonbeam ([-2, -1, 0.5, 1, 3], [0.1i; 0.8 - 0.3i; 2 + 1i; 1.9; -0.2], 3);
%! expected = [2.2360679774997898, 0.5, 1.5819072112393866, -0.20898356214214131, 1.3729236490972452];
%! assert ([beam.peak, beam.position, beam.width, beam.left, beam.right], expected, -4e-16);
%!test # small drops, within the steps beside the peak
%! beam = pistonbeam (-2:2, [0, 1, 2, 1.5, 0], 1e-6);
%! assert (beam.left < beam.position && beam.position < beam.right);
%! assert (beam.width < 1e-5);
%!test # no drop within x
%! beam = pistonbeam (1:4, [4, 3, 2, 1], half);
%! assert ([beam.peak, beam.position, beam.right], [4, 1, 3], 1e-14);
%! assert (isnan ([beam.left, beam.width]), [true, true]);
%! beam = pistonbeam (1:4, [1, 2, 3, 4], half);
%! assert ([beam.peak, beam.position, beam.left], [4, 4, 2], 1e-14);
%! assert (isnan ([beam.right, beam.width]), [true, true]);
%! beam = pistonbeam (1:3, [0, 0, 0]);
%! assert (beam.peak == 0 && isnan (beam.width));
%!test # a side lobe does not widen the beam
%! beam = pistonbeam (0:6, [1, 0, 1, 2, 1, 0, 1.5], half);
%! assert ([beam.left, beam.right], [2, 4], 1e-14);
%!test # NaN and infinite pressures
%! beam = pistonbeam (1:3, [0, 0, 0; 2, NaN, Inf; 0, 0, 0]);
%! for name = fieldnames (beam)'
%!   assert (isnan (beam.(name{1})), [false, true, true]);
%! endfor
%!test # the shape of grids, classes and orientations
%! x = linspace (-20, 20, 201);
%! p = pistongrid (x, 0, [10, 20, 50], 11, 7.5, 2 * pi / 1.5);
%! beam = pistonbeam (x, p);
%! for n = 1:3
%!   one = pistonbeam (single (x(1:5:end))', p(1:5:end,1,n).');
%!   assert (size (one.width), [1, 1]);
%!   assert (one.width, beam.width(1,1,n), -0.02);
%!   assert (pistonbeam (x, p(:,:,n)).left, beam.left(1,1,n));
%! endfor
%! assert (size (beam.peak), [1, 1, 3]);
%! assert (class (pistonbeam (single (1:3), single ([0, 1, 0])).width), "double");
%! assert (size (pistonbeam (1:3, zeros (3, 0)).width), [1, 0]);
%! assert (pistonbeam (int8 (1:3), int8 ([0; 4; 0]), half).width, 1, 1e-14);
%!test # the far field of a piston: 1.207 lambda z / s wide at half the pressure
%! z = 1000;
%! x = linspace (-300, 300, 101);
%! angle = asin (fzero (@(u) sin (pi * u) / (pi * u) - 0.5, [0.5, 0.7]) / 5);
%! p = pistongrid (x, 0, z, 1, 5, 2 * pi);
%! assert (pistonbeam (x, p, half).width, 2 * z * tan (angle), -0.01);
%!error <Call it as beam = pistonbeam> pistonbeam (1:3)
%!error <x must be two or more finite> pistonbeam ([1, 1], [1, 2])
%!error <x must be two or more finite> pistonbeam ([2, 1], [1, 2])
%!error <x must be two or more finite> pistonbeam ([1, NaN], [1, 2])
%!error <x must be two or more finite> pistonbeam ([1, Inf], [1, 2])
%!error <x must be two or more finite> pistonbeam ([1, 2i], [1, 2])
%!error <x must be two or more finite> pistonbeam (1, 1)
%!error <x must be two or more finite> pistonbeam ({1, 2}, [1, 2])
%!error <p must be one number for each of x> pistonbeam (1:3, [1, 2])
%!error <p must be one number for each of x> pistonbeam (1:3, ones (2, 3))
%!error <p must be one number for each of x> pistonbeam (1:3, "abc")
%!error <drop must be a positive number> pistonbeam (1:3, 1:3, 0)
%!error <drop must be a positive number> pistonbeam (1:3, 1:3, -6)
%!error <drop must be a positive number> pistonbeam (1:3, 1:3, Inf)
%!error <drop must be a positive number> pistonbeam (1:3, 1:3, [3, 6])
%!error <drop must be a positive number> pistonbeam (1:3, 1:3, "6")
%!error id=pistonbeam:x pistonbeam ([1, 1], [1, 2])
