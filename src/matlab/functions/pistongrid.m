% PISTONGRID  Pressure of a rectangular piston on a grid.
%
%   p = pistongrid (x, y, z, l, s, k)
%   p = pistongrid (x, y, z, l, s, k, nabscissas)
%   p = pistongrid (..., 'quiet')
%   [p, order] = pistongrid (...)
%
% p(i,j,m) is the complex pressure at the point x(i), y(j), z(m): abs (p(:,:,1)) is a
% picture of the plane z(1), and pistonplot (x, y, z, p) draws a plane.  The piston, the
% units and the scale of p are those of pistonfield.
%
% Arguments (all lengths, and 1/k, in one unit; pistonplot takes metres)
%
%   x, y, z     the axes of the grid: real vectors of one or more values.
%   l, s        sides of the piston along y and along x, full lengths.
%   k           wave number, 2 pi / wavelength.
%   nabscissas  order of the quadrature rule, 1 to 512, or a table made by pistonrule.
%               If it is omitted or [], pistongrid chooses an order with an error below
%               1e-4 of the peak pressure on the grid.
%   'quiet'     suppresses the progress bar, which appears if the work takes more than
%               half a second.
%
% Result
%
%   p           numel (x) by numel (y) by numel (z), complex double.
%   order       the chosen order, or nabscissas.
%
% How the order is chosen: pistongrid compares the pressures of lower orders with those
% of an order at least four times as high (384 with 512, the highest).  It compares all
% points of a grid of up to 1000 points.  On a larger grid it compares some 700 points,
% with a safety margin: those that need the highest orders, those nearest to the piston,
% and others.  This is no proof, but of 1000 random grids none had an error above 1e-4 of
% its peak at any point.  The search takes longer than the pressure of a small grid: in a
% loop over small grids, pass the order that the first call returned.
%
% Example: the plane y = 0 of a piston at 1 MHz in water
%
%   lambda = 1500 / 1e6;                      % m
%   x = (-75:75) * lambda / 15;
%   z = (1:300) * lambda / 15;
%   p = pistongrid (x, 0, z, 7.5 * lambda, 5 * lambda, 2 * pi / lambda);
%   pistonplot (x, 0, z, p);
%
% Errors: "x, y and z must be non-empty real vectors."; "l must be a finite real number.",
% the same for s and k; "nabscissas must be an order from 1 to 512, ..."; "Sides must be
% from 1e-18 to 1e18 ..."; "No order up to 384 keeps the error below 1e-4 ..." (next to the
% edges of very long sides, and behind the piston); and pistonfield's errors of the device
% and of memory.
%
% See also: pistonfield, pistonplot, pistonarray, pistonorder.

function [p, nabscissas] = pistongrid (x, y, z, l, s, k, varargin)

  if (nargin < 6)
    error ('pistongrid:arguments', 'Too few arguments. Call it as p = pistongrid (x, y, z, l, s, k).');
  end
  if (~ isaxis (x) || ~ isaxis (y) || ~ isaxis (z))
    error ('pistongrid:axes', 'x, y and z must be non-empty real vectors.');
  end
  l = readnumber ('pistongrid', 'l', l);
  s = readnumber ('pistongrid', 's', s);
  k = readnumber ('pistongrid', 'k', k);
  [nabscissas, quiet] = readoptions ('pistongrid', varargin);

  x = full (double (x(:).'));
  y = full (double (y(:).'));
  z = full (double (z(:).'));
  checklengths ('pistongrid', [l, s], [x, y, z]);
  sizes = [numel(x), numel(y), numel(z)];
  if (isempty (nabscissas))
    nabscissas = defaultorder ('pistongrid', somepoints (x, y, z, l, s), singlepiston (l, s), k);
  end

  evaluate = @(first, last, ~) piece (first, last, x, y, z, l, s, k, nabscissas);
  p = inpieces ('pistongrid', evaluate, prod (sizes), 2 ^ 21, 1, quiet);
  p = reshape (p, sizes);

end

function p = piece (first, last, x, y, z, l, s, k, nabscissas)

  [i, j, m] = ind2sub ([numel(x), numel(y), numel(z)], first:last);
  points = [x(i); y(j); z(m)];
  p = pistonfield_quiet (points, 0, l, s, k, 'cuda', nabscissas);

end

% Selects some thousands of the grid's points: along each axis those nearest to an edge, and others. If
% an axis is short, the longer ones get more values.

function points = somepoints (x, y, z, l, s)

  counts = [numel(x), numel(y), numel(z)];
  [~, rising] = sort (counts);
  for n = 1:3
    taken = prod (counts(rising(1:n-1)));
    counts(rising(n)) = min (counts(rising(n)), floor ((8192 / taken) ^ (1 / (4 - n))));
  end
  [X, Y, Z] = ndgrid (some (x, s / 2, counts(1)), some (y, l / 2, counts(2)), some (z, 0, counts(3)));
  points = [X(:), Y(:), Z(:)].';

end

function values = some (values, edge, count)

  [~, nearest] = sort (abs (abs (values) - abs (edge)));
  values = values(nearest(spreadranks (numel (values), count)));

end

function answer = isaxis (values)

  answer = isnumeric (values) && isreal (values) && isvector (values) && ~ isempty (values);

end

%!shared x, y, z
%! x = [-2, 0.5, 1, 3];  y = [0, 0.25, 7];  z = [0.5, 4];
%!test # values are in the order of ndgrid
%! p = pistongrid (x, y, z, 7.5, 5, 2 * pi, 20);
%! assert (size (p), [4, 3, 2]);
%! for i = 1:4
%!   for j = 1:3
%!     for m = 1:2
%!       q = pistonfield_quiet ([x(i); y(j); z(m)], 0, 7.5, 5, 2 * pi, "cuda", 20);
%!       assert (p(i,j,m), q);
%!     endfor
%!   endfor
%! endfor
%!test # axes may be columns
%! assert (pistongrid (x', y', z', 1, 2, 3), pistongrid (x, y, z, 1, 2, 3));
%!test # the default order keeps the error below 1e-4 of the peak, and is returned
%! across = (-100:100) * 0.1e-3;
%! depths = (1:300) * 0.1e-3;
%! k = 2 * pi * 2.25e6 / 1500;
%! [p, order] = pistongrid (across, 0, depths, 20e-3, 10e-3, k);
%! best = pistongrid (across, 0, depths, 20e-3, 10e-3, k, 512);
%! errorof = @(q) max (abs (q(:) - best(:))) / max (abs (best(:)));
%! assert (errorof (p) < 1e-4);
%! assert (errorof (pistongrid (across, 0, depths, 20e-3, 10e-3, k, order - 4)) > 1e-4); # the order is not far too high
%! assert (p, pistongrid (across, 0, depths, 20e-3, 10e-3, k, order));
%! [q, again] = pistongrid (across, 0, depths, 20e-3, 10e-3, k, [], "quiet");
%! assert ({q, again}, {p, order});
%!test # a given order is used unchanged
%! [p, order] = pistongrid (x, y, z, 7.5, 5, 2 * pi, 4);
%! assert (order, 4);
%! assert (p(2,1,1), pistonfield_quiet ([0.5; 0; 0.5], 0, 7.5, 5, 2 * pi, "cuda", 4));
%!test # the pressure is 0 or NaN everywhere
%! [p, order] = pistongrid (x, y, z, 7.5, 5, 0);
%! assert ({p, order}, {complex(zeros(4, 3, 2)), 1});
%! [p, order] = pistongrid (NaN, NaN, 1, 7.5, 5, 1);
%! assert (isnan (p) && order == 1);
%!error <No order up to 384 keeps the error below 1e-4> pistongrid (0, 1.001e-4, -1, 2e-4 + 2e-10, 3, 6)
%!test # one point
%! assert (size (pistongrid (0, 0, 1, 1, 1, 1)), [1, 1]);
%!test # a table of pistonrule
%! p = pistongrid (x, y, z, 1, 2, 3, pistonrule (10));
%! assert (max (abs (p(:) - pistongrid (x, y, z, 1, 2, 3, 10)(:))) < 1e-6);
%!test # it prints nothing
%! assert (isempty (evalc ("p = pistongrid (x, y, z, 1, 2, 3);")));
%!test # behind the piston, next to the plane of an edge, and on a grid with one long axis
%! for grid = {{.4118, .48732556881230871, -1.1, .97465108273727086, 2.728, 2 * pi}, ...
%!             {0.3 + 1e-7, 0.7, -0.006, 3, 0.6, 2 * pi}, ...
%!             {[3, 3.6], linspace(-6, 3, 2001), [1, 1.5], 3, 10, 2 * pi}}
%!   best = pistongrid (grid{1}{:}, 512);
%!   try
%!     p = pistongrid (grid{1}{:});
%!     assert (max (abs (p(:) - best(:))) < 1e-4 * max (abs (best(:))));
%!   catch failure
%!     assert (! isempty (strfind (failure.message, "No order up to 384 keeps")));
%!   end_try_catch
%! endfor
%!error <p = pistongrid> pistongrid (1, 2, 3, 4, 5)
%!error <x, y and z must be non-empty real vectors> pistongrid (ones (2), 2, 3, 4, 5, 6)
%!error <x, y and z must be non-empty real vectors> pistongrid ([], 2, 3, 4, 5, 6)
%!error <x, y and z must be non-empty real vectors> pistongrid ("x", 2, 3, 4, 5, 6)
%!error <x, y and z must be non-empty real vectors> pistongrid (1i, 2, 3, 4, 5, 6)
%!error <Sides must be from 1e-18> pistongrid (1, 2, 3, 1e-19, 5, 6)
%!error <coordinates at most 1e18> pistongrid (1, -1e19, 3, 4, 5, 6, 10)
%!error <s must be a finite real number> pistongrid (1, 2, 3, 4, {}, 6)
%!error <nabscissas must be an order from 1 to 512> pistongrid (1, 2, 3, 4, 5, 6, 0)
%!error <a table made by pistonrule> pistongrid (1, 2, 3, 4, 5, 6, [[-1; 1] / sqrt(3), [1; 1]])
%!demo
%! lambda = 1500 / 1e6;
%! x = (-75:75) * lambda / 15;
%! z = (1:300) * lambda / 15;
%! p = pistongrid (x, 0, z, 7.5 * lambda, 5 * lambda, 2 * pi / lambda);
%! pistonplot (x, 0, z, p);
