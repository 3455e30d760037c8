% PISTONMATRIX  Matrix array of equal pistons.
%
%   array = pistonmatrix (counts, pitches, l, s)
%
% Returns the struct that pistonarray takes: rows and columns of elements in the plane
% z = 0, centred on the origin.  They are numbered along x first: element
% i + counts(1) * (j - 1) has the centre
%
%   x = (i - (counts(1) + 1) / 2) * pitches(1)
%   y = (j - (counts(2) + 1) / 2) * pitches(2)
%
% so reshape (array.weights, counts) has the layout of the elements.  Add weights, steer or
% focus as fields: see pistonarray.
%
% Arguments (all lengths in one unit)
%
%   counts      numbers of elements along x and along y; at most 1e6 elements in all.
%   pitches     distances between the centres of neighbours along x and along y, or one
%               number for both; positive.
%   l, s        sides of an element along y and along x, positive; l at most the pitch
%               along y, s at most the pitch along x.
%
% Result
%
%   array       struct with the fields l, s and positions (3 x M, M = prod (counts)).
%
% Example: 32 x 32 elements at 2.5 MHz in tissue, focused to the side
%
%   counts = [32, 32];
%   array = pistonmatrix (counts, 0.3e-3, 0.27e-3, 0.27e-3);      % m
%   array.weights = pistonapodization ('hamming', counts);
%   array.focus = [4e-3; 3e-3; 25e-3];
%   x = (-80:80) * 0.1e-3;
%   p = pistonarray ({x, x, 25e-3}, array, 2 * pi * 2.5e6 / 1540);
%   pistonplot (x, x, 25e-3, p, 'dB');
%
% Errors: "counts must be two integers from 1, ..."; "pitches must be two numbers, ..." or
% "... must be positive."; "l must be a finite real number." or "... must be positive.", the same
% for s; "s must be at most the pitch in its direction: elements must not overlap.", the same for
% l; "Sides must be from 1e-18 to 1e18 ..."
%
% See also: pistonarray, pistonlinear, pistonconvex, pistonapodization, pistonlens.

function array = pistonmatrix (counts, pitches, l, s)

  if (nargin < 4)
    error ('pistonmatrix:arguments', ...
           'Too few arguments. Call it as array = pistonmatrix (counts, pitches, l, s).');
  end
  if (~ isnumeric (pitches) || ~ any (numel (pitches) == [1, 2]))
    error ('pistonmatrix:pitches', 'pitches must be two numbers, along x and along y, or one for both.');
  end
  array = fromlibrary ('pistonmatrix', 'matrix', counts, pitches([1, end]), s, l);
  checklengths ('pistonmatrix', [array.l, array.s], array.positions);

end

%!test # numbered along x first
%! array = pistonmatrix ([3, 2], [2, 5], 4, 1);
%! assert (array.positions, [-2, 0, 2, -2, 0, 2; -2.5, -2.5, -2.5, 2.5, 2.5, 2.5; zeros(1, 6)]);
%! assert ({array.l, array.s}, {4, 1});
%!test # one pitch for both directions; arguments of any numeric class
%! assert (pistonmatrix ([3, 2], 5, 4, 1), pistonmatrix (int8 ([3; 2]), sparse ([5, 5]), single (4), 1));
%!test # one row is a linear array
%! assert (pistonmatrix ([7, 1], 2, 9, 1), pistonlinear (7, 2, 9, 1));
%!test # without kerfs, the array is one large piston
%! k = 2 * pi;
%! points = [-9, -1.3, 0.1, 2.3, 6; 0, 2, -1, 1.4, 5; 5, 1, 20, 0.5, 60];
%! whole = pistonfield_quiet (points, 0, 4 * 1.25, 8 * 0.5, k, "cuda", 80);
%! p = pistonarray (points, pistonmatrix ([8, 4], [0.5, 1.25], 1.25, 0.5), k, 80);
%! assert (max (abs (p - whole)) < 2e-6 * max (abs (whole)));
%!test # weights in the order of the elements: off but for one row along x, it is the linear array there
%! k = 2 * pi;
%! points = [-9, -1.3, 0.1, 2.3, 6; 0, 2, -1, 1.4, 5; 5, 1, 20, 0.5, 60];
%! array = pistonmatrix ([8, 3], [0.5, 1.25], 1, 0.4);
%! weights = zeros (8, 3);
%! weights(:,3) = (1:8) / 8;
%! array.weights = weights;
%! row = pistonlinear (8, 0.5, 1, 0.4);
%! row.weights = (1:8) / 8;
%! p = pistonarray (points - [0; 1.25; 0], row, k, 40);
%! assert (max (abs (pistonarray (points, array, k, 40) - p)) < 1e-6);
%!error <Call it as array = pistonmatrix> pistonmatrix ([4, 4], 1, 1)
%!error <counts must be two integers> pistonmatrix (4, 1, 1, 1)
%!error <counts must be two integers> pistonmatrix ([4, 0], 1, 1, 1)
%!error <counts must be two integers> pistonmatrix ([4, 1.5], 1, 1, 1)
%!error <counts must be two integers> pistonmatrix ([1001, 1000], 1, 1, 1)
%!error <counts must be two integers> pistonmatrix ({4, 4}, 1, 1, 1)
%!error <pitches must be two numbers> pistonmatrix ([4, 4], [1, 1, 1], 1, 1)
%!error <pitches must be two numbers> pistonmatrix ([4, 4], "1", 1, 1)
%!error <pitches must be a finite real number> pistonmatrix ([4, 4], [1, NaN], 1, 1)
%!error <pitches must be positive> pistonmatrix ([4, 4], [1, -1], 1, 1)
%!error <l must be positive> pistonmatrix ([4, 4], 1, 0, 1)
%!error <s must be a finite real number> pistonmatrix ([4, 4], 1, 1, 1i)
%!error <l must be at most the pitch> pistonmatrix ([4, 4], [2, 1], 2, 1)
%!error <s must be at most the pitch> pistonmatrix ([4, 4], [1, 2], 1, 2)
%!error id=pistonmatrix:l pistonmatrix ([4, 4], [2, 1], 2, 1)
%!error <Sides must be from 1e-18> pistonmatrix ([4, 4], 1, 1, 1e-19)
%!demo
%! counts = [32, 32];
%! array = pistonmatrix (counts, 0.3e-3, 0.27e-3, 0.27e-3);      % m
%! array.weights = pistonapodization ('hamming', counts);
%! array.focus = [4e-3; 3e-3; 25e-3];
%! x = (-80:80) * 0.1e-3;
%! p = pistonarray ({x, x, 25e-3}, array, 2 * pi * 2.5e6 / 1540);
%! pistonplot (x, x, 25e-3, p, 'dB');
