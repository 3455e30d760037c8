% PISTONLENS  Elevation focus of an array: a lens on the face of each element.
%
%   array = pistonlens (array, focus, k)
%   array = pistonlens (array, focus, k, 'tolerance', tolerance)
%
% Takes an array as pistonarray does and returns it with a thin lens on each element, which acts
% along the element's own y: the waves of its face arrive in phase at the distance focus from
% its centre, along its own z.  At the height y of the face the lens advances the velocity by
%
%   exp (1i * k * (sqrt (focus ^ 2 + y ^ 2) - focus))
%
% A piston moves with one velocity, so each element is replaced by strips of equal height, each
% with the phase of its middle.
%
% Arguments (all lengths, and 1/k, in one unit)
%
%   array       the struct that pistonarray takes.  Its steer or focus acts on the elements'
%               centres, as without a lens, and becomes a part of the weights.
%   focus       distance of the lens' focus, not 0.  If it is negative, the lens spreads the
%               waves, as if they came from this distance behind the element:
%               the phase is that of -focus with the opposite sign.
%   k           wave number, as for pistonarray.  Of a complex k the real part.
%   tolerance   largest difference between the pressures of the strips and of the lens,
%               relative to the largest pressure: from 1e-12 to below 1.  Default: 1e-3.
%
% Result
%
%   array       a struct with the fields l, s, positions, weights and, if the array has them,
%               rotations: the strips from the lower to the upper edge of the first element,
%               then those of the next.  Sides are positive.
%
% The tolerance holds for each element at points that are at least a wavelength away from it,
% if abs (focus) is at least a tenth of abs (l).  Nearer, the steps between the strips are seen:
% at the face the error is up to ten times as large.  The errors of the elements add up as their
% waves do, so an array in focus keeps the tolerance, too.  The tolerance of pistonarray comes on
% top.  The number of strips of an element is proportional to 1 / sqrt (tolerance), unless the
% strips would be higher than half a wavelength; the time of pistonarray grows with it.
%
% The lens holds for one wave number: pistonpulse and pistonecho refuse its complex weights.
%
% Example: 64 elements at 5 MHz in tissue, focused at 30 mm, with a lens for 25 mm
%
%   k = 2 * pi * 5e6 / 1540;
%   array = pistonlinear (64, 0.3e-3, 5e-3, 0.27e-3);
%   array.focus = [0; 0; 30e-3];
%   array = pistonlens (array, 25e-3, k, 'tolerance', 1e-2);
%   y = (-40:40) * 0.1e-3;
%   z = (4:100) * 0.5e-3;
%   p = pistonarray ({0, y, z}, array, k);
%   pistonplot (0, y, z, p, 'dB');
%
% Errors: "array ...", with the field and its requirement; "focus must be a finite real number
% that is not 0."; "k must be a finite number."; "k has a positive imaginary part ..."; "The
% attenuation must be ..."; "tolerance must be at least 1e-12 ..."; "tolerance must be larger,
% or the pistons fewer or smaller: ..."; "After k, pass ..."
%
% See also: pistonarray, pistonlinear, pistonmatrix, pistonconvex.

function array = pistonlens (array, focus, k, varargin)

  if (nargin < 3)
    error ('pistonlens:arguments', ...
           'Too few arguments. Call it as array = pistonlens (array, focus, k).');
  end
  tolerance = 1e-3;
  if (numel (varargin) == 2 && isword (varargin{1}, 'tolerance'))
    tolerance = readtolerance ('pistonlens', varargin{2});
  elseif (~ isempty (varargin))
    error ('pistonlens:options', 'After k, pass ''tolerance'' and a number, or nothing.');
  end
  k = readwavenumber ('pistonlens', k);
  elements = readarray (array, k);
  strips = fromlibrary ('pistonlens', 'lensed', librarypistons (elements), focus, k, tolerance);

  rotations = {};
  if (isfield (array, 'rotations'))
    rotations = {'rotations', strips.axes};
    if (size (array.rotations, 3) == 1)
      rotations{2} = array.rotations;
    end
  end
  array = struct ('l', strips.heights, 's', strips.widths, 'positions', strips.centres, rotations{:}, ...
                  'weights', strips.weights);

end

%!shared k, one
%! k = 2 * pi;                                             # the wavelength is 1
%! one = struct ("l", 16, "s", 0.9, "positions", [0; 0; 0]);
%!test # against a sum over small elements with the phase of the lens, without and with loss
%! [X, Y] = ndgrid (((1:20) - 10.5) / 20 * 0.9, ((1:800) - 400.5) / 800 * 16);
%! points = [0, 0, 0.3, 0, 2; 0, 1, 3, 7.9, 0.2; 40, 40, 20, 1, 80];
%! for focus = [40, -40]
%!   lens = exp (sign (focus) * 1i * k * (sqrt (focus ^ 2 + Y .^ 2) - abs (focus)));
%!   for K = [k, k - 0.02i]
%!     exact = zeros (5, 1);
%!     for n = 1:5
%!       R = sqrt ((points(1,n) - X) .^ 2 + (points(2,n) - Y) .^ 2 + points(3,n) ^ 2);
%!       exact(n) = K / (2 * pi) * sum ((lens .* exp (-1i * K * R) ./ R)(:)) * 0.9 * 16 / numel (R);
%!     endfor
%!     for tolerance = [1e-2, 1e-3]
%!       strips = pistonlens (one, focus, K, "tolerance", tolerance);
%!       p = pistonarray (points, strips, K, "tolerance", 1e-6);
%!       assert (max (abs (p - exact)) < (tolerance + 1e-4) * max (abs (exact)));
%!     endfor
%!     assert (max (abs (pistonarray (points, one, K) - exact)) > 0.2 * max (abs (exact)));
%!   endfor
%! endfor
%!test # waves from all strips arrive at the focus in phase, also from a turned element
%! c = cosd (20);  s = sind (20);
%! R = [c, 0, s; 0, 1, 0; -s, 0, c] * [1, 0, 0; 0, c, -s; 0, s, c];
%! moved = setfield (setfield (one, "positions", [3; -1; 7]), "rotations", R);
%! strips = pistonlens (moved, 30, k);
%! f = moved.positions + 30 * R(:,3);
%! paths = sqrt (sum ((strips.positions - f) .^ 2))';
%! assert (strips.weights, exp (1i * k * (paths - 30)), 1e-11);
%! assert (strips.rotations, R);
%! assert (strips.positions, moved.positions + R(:,2) * (R(:,2)' * (strips.positions - moved.positions)), 1e-12);
%! assert (sum (strips.l), 16, 1e-12);
%! assert (unique (strips.s), 0.9);
%!test # how many strips, from which edge on, and the default of the tolerance
%! strips = pistonlens (one, 80, k);
%! assert (columns (strips.positions), 170);
%! assert (strips.positions(2,:), ((1:170) - 85.5) * 16 / 170, 1e-13);
%! assert (pistonlens (one, 80, k, "Tolerance", 1e-3), strips);
%! assert (columns (pistonlens (one, 800, k, "tolerance", 1e-2).positions), 32);
%! assert (columns (pistonlens (one, 1e9, k).positions), 1);
%! assert (fieldnames (strips), {"l"; "s"; "positions"; "weights"});
%!test # the strips of one element follow those of the other; sides, weights, rotations and focus are its own
%! c = cosd (20);  s = sind (20);
%! R = cat (3, eye (3), [c, 0, s; 0, 1, 0; -s, 0, c]);
%! two = struct ("l", [8, -3], "s", [1, 2], "positions", [0, 5; 0, 0; 0, 1], "rotations", R, ...
%!               "weights", [2, 1i], "focus", [1; 0; 20]);
%! strips = pistonlens (two, 10, k - 0.1i);
%! [~, used] = pistonarray ([0; 0; 9], two, k);
%! first = numel (pistonlens (struct ("l", 8, "s", 1, "positions", [0; 0; 0]), 10, k).l);
%! second = numel (strips.l) - first;
%! assert (second > 10 && first > second);
%! assert (strips.s, [ones(first, 1); 2 * ones(second, 1)]);
%! assert (strips.l, [8 / first * ones(first, 1); 3 / second * ones(second, 1)], 1e-14);
%! assert (strips.rotations, cat (3, repmat (R(:,:,1), [1, 1, first]), repmat (R(:,:,2), [1, 1, second])));
%! y = [strips.positions(2,1:first), strips.positions(2,first+1:end)]';
%! element = [used.weights(1) * ones(first, 1); -used.weights(2) * ones(second, 1)];
%! assert (strips.weights, element .* exp (1i * k * (sqrt (100 + y .^ 2) - 10)), 1e-11);
%! p = pistonarray ([0; 1; 9], strips, k);                # is an array again
%! assert (isfinite (p));
%!test # an array of one wavelength and one height: a focus in elevation and one in azimuth
%! array = setfield (pistonlinear (16, 0.6, 20, 0.5), "focus", [0; 0; 60]);
%! bare = abs (pistonarray ([0; 0; 60], array, k));
%! assert (abs (pistonarray ([0; 0; 60], pistonlens (array, 60, k), k)) > 1.3 * bare);
%!error <Call it as array = pistonlens> pistonlens (one, 40)
%!error <focus must be a finite real number that is not 0> pistonlens (one, 0, k)
%!error <focus must be a finite real number that is not 0> pistonlens (one, Inf, k)
%!error <focus must be a finite real number that is not 0> pistonlens (one, [0; 0; 40], k)
%!error <focus must be a finite real number that is not 0> pistonlens (one, "40", k)
%!error <k must be a finite number> pistonlens (one, 40, NaN)
%!error <k has a positive imaginary part> pistonlens (one, 40, k + 1i)
%!error <tolerance must be at least 1e-12> pistonlens (one, 40, k, "tolerance", 1)
%!error <tolerance must be larger> pistonlens (setfield (one, "l", 1e5), 40, k, "tolerance", 1e-12)
%!error <After k, pass 'tolerance' and a number> pistonlens (one, 40, k, 1e-3)
%!error <After k, pass 'tolerance' and a number> pistonlens (one, 40, k, "tolerance")
%!error <After k, pass 'tolerance' and a number> pistonlens (one, 40, k, "quiet", 1)
%!error <array needs the field s> pistonlens (struct ("l", 1, "positions", [0; 0; 0]), 40, k)
%!error id=pistonlens:focus pistonlens (one, 0, k)
%!demo
%! k = 2 * pi * 5e6 / 1540;
%! array = pistonlinear (64, 0.3e-3, 5e-3, 0.27e-3);
%! array.focus = [0; 0; 30e-3];
%! array = pistonlens (array, 25e-3, k, 'tolerance', 1e-2);
%! y = (-40:40) * 0.1e-3;
%! z = (4:100) * 0.5e-3;
%! p = pistonarray ({0, y, z}, array, k);
%! pistonplot (0, y, z, p, 'dB');
