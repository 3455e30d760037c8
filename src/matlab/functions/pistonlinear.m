% PISTONLINEAR  Linear array of equal pistons.
%
%   array = pistonlinear (count, pitch, l, s)
%
% Returns the struct that pistonarray takes: elements along x in the plane z = 0, centred
% on the origin.  The centre of element n is at
%
%   x(n) = (n - (count + 1) / 2) * pitch
%
% Add weights, steer or focus as fields: see pistonarray.
%
% Arguments (all lengths in one unit)
%
%   count       number of elements, 1 to 1e6.
%   pitch       distance between the centres of neighbours, positive.
%   l, s        sides of an element along y and along x, positive; s at most pitch.  The
%               gap between neighbours (kerf) is pitch - s.
%
% Result
%
%   array       struct with the fields l, s and positions (3 x count).
%
% Example: 128 elements at 5 MHz in tissue, apodized and focused at 30 mm
%
%   array = pistonlinear (128, 0.3e-3, 5e-3, 0.27e-3);            % m
%   array.weights = pistonapodization ('hann', 128);
%   array.focus = [0; 0; 30e-3];
%   x = (-100:100) * 0.1e-3;
%   z = (10:200) * 0.25e-3;
%   p = pistonarray ({x, 0, z}, array, 2 * pi * 5e6 / 1540);
%   pistonplot (x, 0, z, p, 'dB');
%
% Errors: "count must be an integer from 1 to 1e6."; "pitch must be a finite real number." or
% "... must be positive.", the same for l and s; "s must be at most the pitch in its direction:
% elements must not overlap."; "Sides must be from 1e-18 to 1e18 ..."
%
% See also: pistonarray, pistonmatrix, pistonconvex, pistonapodization, pistonlens.

function array = pistonlinear (count, pitch, l, s)

  if (nargin < 4)
    error ('pistonlinear:arguments', ...
           'Too few arguments. Call it as array = pistonlinear (count, pitch, l, s).');
  end
  array = fromlibrary ('pistonlinear', 'linear', count, pitch, s, l);
  checklengths ('pistonlinear', [array.l, array.s], array.positions);

end

%!test # centred on the origin, from left to right
%! array = pistonlinear (4, 2, 7, 1.5);
%! assert (array, struct ("l", 7, "s", 1.5, "positions", [-3, -1, 1, 3; zeros(2, 4)]));
%! assert (pistonlinear (5, 2, 7, 1.5).positions, [-4, -2, 0, 2, 4; zeros(2, 5)]);
%!test # one element: no neighbour, so any s
%! assert (pistonlinear (1, 1, 7, 3).positions, [0; 0; 0]);
%!test # without kerfs, the array is one long piston
%! k = 2 * pi;
%! points = [-9, -3.3, 0.1, 2.3, 6; 0, 2, -1, 1.4, 5; 5, 1, 20, 0.5, 60];
%! whole = pistonfield_quiet (points, 0, 5, 16 * 0.4, k, "cuda", 80);
%! p = pistonarray (points, pistonlinear (16, 0.4, 5, 0.4), k, 80);
%! assert (max (abs (p - whole)) < 2e-6 * max (abs (whole)));
%! p = pistonarray (points, pistonlinear (16, 0.4, 5, 0.38), k, 80);
%! assert (max (abs (p - whole)) > 1e-2 * max (abs (whole)));
%!test # a pitch and a side that are equal but for rounding
%! pistonlinear (128, single (0.3e-3), 5e-3, 0.3e-3);
%! pistonlinear (128, 0.3e-3, 5e-3, single (0.3e-3));
%!test # l is along y, where there are no neighbours
%! pistonlinear (128, 1, 100, 1);
%!error <Call it as array = pistonlinear> pistonlinear (4, 1, 1)
%!error <count must be an integer from 1> pistonlinear (0, 1, 1, 1)
%!error <count must be an integer from 1> pistonlinear (2.5, 1, 1, 1)
%!error <count must be an integer from 1> pistonlinear ([2, 2], 1, 1, 1)
%!error <count must be an integer from 1> pistonlinear (NaN, 1, 1, 1)
%!error <count must be an integer from 1> pistonlinear (1e6 + 1, 1, 1, 1)
%!error <count must be an integer from 1> pistonlinear ("4", 1, 1, 1)
%!error <pitch must be a finite real number> pistonlinear (4, Inf, 1, 1)
%!error <pitch must be a finite real number> pistonlinear (4, [1, 2], 1, 1)
%!error <pitch must be positive> pistonlinear (4, 0, 1, 1)
%!error <l must be positive> pistonlinear (4, 1, -1, 1)
%!error <s must be positive> pistonlinear (4, 1, 1, 0)
%!error <s must be a finite real number> pistonlinear (4, 1, 1, NaN)
%!error <s must be at most the pitch> pistonlinear (4, 1, 1, 1.01)
%!error id=pistonlinear:s pistonlinear (4, 1, 1, 1.01)
%!error <Sides must be from 1e-18> pistonlinear (4, 1, 1, 1e-19)
%!error <coordinates at most 1e18> pistonlinear (4, 1e18, 1, 1)
%!demo
%! array = pistonlinear (128, 0.3e-3, 5e-3, 0.27e-3);            % m
%! array.weights = pistonapodization ('hann', 128);
%! array.focus = [0; 0; 30e-3];
%! x = (-100:100) * 0.1e-3;
%! z = (10:200) * 0.25e-3;
%! p = pistonarray ({x, 0, z}, array, 2 * pi * 5e6 / 1540);
%! pistonplot (x, 0, z, p, 'dB');
