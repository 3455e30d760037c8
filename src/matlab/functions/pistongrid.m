% PISTONGRID  Pressure of a rectangular piston on a grid.
%
%   p = pistongrid (x, y, z, l, s, k)
%   p = pistongrid (x, y, z, l, s, k, nabscissas)
%   p = pistongrid (..., 'quiet')
%   [p, order] = pistongrid (...)
%
% p(i,j,m) is the complex pressure at the point x(i), y(j), z(m), so that
% abs (p(:,:,1)) is a picture of the plane z(1), and pistonplot (x, y, z, p) draws a
% plane.  The piston, the units and the scale of p are those of pistonfield.
%
% Arguments (all lengths, and 1/k, in one unit; pistonplot takes metres)
%
%   x, y, z     the axes of the grid: real vectors, of one value or more.
%   l, s        sides of the piston along y and along x, full lengths.
%   k           wave number, 2 pi / wavelength.
%   nabscissas  order of the quadrature rule, 1 ... 512, or a table made by pistonrule,
%               used as it is.  When it is left out or [], an order is chosen whose error
%               is below 1e-4 of the peak pressure on the grid.
%   'quiet'     shows no progress bar, which work of more than half a second has.
%
% Result
%
%   p           numel (x) by numel (y) by numel (z), complex double.
%   order       the order that was chosen, or nabscissas.
%
% How the order is chosen: the pressures of lower orders are compared with those of one at
% least four times as high (384 with 512, the highest), on a grid of up to 1000 points at all
% of them, on a larger one at some 700, which are those where the edges need the most, those
% nearest to the piston, and others, with a margin.  This is no proof; of 1000 random grids
% none was beyond 1e-4 of its peak at any point.  It takes longer than a small grid itself:
% in a loop over small grids, pass the order that the first call returned.
%
% Example: the plane y = 0 of a piston of 1 MHz in water
%
%   lambda = 1500 / 1e6;                      % m
%   x = (-75:75) * lambda / 15;
%   z = (1:300) * lambda / 15;
%   p = pistongrid (x, 0, z, 7.5 * lambda, 5 * lambda, 2 * pi / lambda);
%   pistonplot (x, 0, z, p);
%
% Errors: "x, y and z must be real vectors."; "l must be a finite real number.", and so for s
% and k; "nabscissas must be an order, 1 ... 512, or a table made by pistonrule, which is not
% [x, w]."; "Sides must be 1e-18 ... 1e18 and coordinates at most 1e18: ..."; "No order up to
% 384 brings the pressure within 1e-4 of its peak. ..." (next to the edges of very long sides,
% and behind the piston); and those of pistonfield's device and memory.
%
% See also: pistonfield, pistonplot, pistonarray, pistonorder.

function [p, nabscissas] = pistongrid (x, y, z, l, s, k, varargin)

  if (nargin < 6)
    error ('pistongrid:arguments', 'Call it as p = pistongrid (x, y, z, l, s, k).');
  end
  if (~ isaxis (x) || ~ isaxis (y) || ~ isaxis (z))
    error ('pistongrid:axes', 'x, y and z must be real vectors.');
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

% Some thousands of the grid's points: along each axis those nearest to an edge, and others. What a
% short axis leaves of them goes to the longer ones.

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
%!test # the value at every point, in the order of ndgrid
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
%!test # columns are axes too
%! assert (pistongrid (x', y', z', 1, 2, 3), pistongrid (x, y, z, 1, 2, 3));
%!test # the order that is left out is chosen for 1e-4 of the peak, and shown
%! across = (-100:100) * 0.1e-3;
%! depths = (1:300) * 0.1e-3;
%! k = 2 * pi * 2.25e6 / 1500;
%! [p, order] = pistongrid (across, 0, depths, 20e-3, 10e-3, k);
%! best = pistongrid (across, 0, depths, 20e-3, 10e-3, k, 512);
%! errorof = @(q) max (abs (q(:) - best(:))) / max (abs (best(:)));
%! assert (errorof (p) < 1e-4);
%! assert (errorof (pistongrid (across, 0, depths, 20e-3, 10e-3, k, order - 4)) > 1e-4); # and not far too high
%! assert (p, pistongrid (across, 0, depths, 20e-3, 10e-3, k, order));
%! [q, again] = pistongrid (across, 0, depths, 20e-3, 10e-3, k, [], "quiet");
%! assert ({q, again}, {p, order});
%!test # an order that is given is used as it is
%! [p, order] = pistongrid (x, y, z, 7.5, 5, 2 * pi, 4);
%! assert (order, 4);
%! assert (p(2,1,1), pistonfield_quiet ([0.5; 0; 0.5], 0, 7.5, 5, 2 * pi, "cuda", 4));
%!test # no pressure, and none that is a number
%! [p, order] = pistongrid (x, y, z, 7.5, 5, 0);
%! assert ({p, order}, {complex(zeros(4, 3, 2)), 1});
%! [p, order] = pistongrid (NaN, NaN, 1, 7.5, 5, 1);
%! assert (isnan (p) && order == 1);
%!error <No order up to 384 brings the pressure within 1e-4> pistongrid (0, 1.001e-4, -1, 2e-4 + 2e-10, 3, 6)
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
%!     assert (! isempty (strfind (failure.message, "No order up to 384 brings")));
%!   end_try_catch
%! endfor
%!error <p = pistongrid> pistongrid (1, 2, 3, 4, 5)
%!error <x, y and z must be real vectors> pistongrid (ones (2), 2, 3, 4, 5, 6)
%!error <x, y and z must be real vectors> pistongrid ([], 2, 3, 4, 5, 6)
%!error <x, y and z must be real vectors> pistongrid ("x", 2, 3, 4, 5, 6)
%!error <x, y and z must be real vectors> pistongrid (1i, 2, 3, 4, 5, 6)
%!error <Sides must be 1e-18> pistongrid (1, 2, 3, 1e-19, 5, 6)
%!error <coordinates at most 1e18> pistongrid (1, -1e19, 3, 4, 5, 6, 10)
%!error <s must be a finite real number> pistongrid (1, 2, 3, 4, {}, 6)
%!error <nabscissas must be an order, 1 ... 512> pistongrid (1, 2, 3, 4, 5, 6, 0)
%!error <a table made by pistonrule> pistongrid (1, 2, 3, 4, 5, 6, [[-1; 1] / sqrt(3), [1; 1]])
%!demo
%! lambda = 1500 / 1e6;
%! x = (-75:75) * lambda / 15;
%! z = (1:300) * lambda / 15;
%! p = pistongrid (x, 0, z, 7.5 * lambda, 5 * lambda, 2 * pi / lambda);
%! pistonplot (x, 0, z, p);
