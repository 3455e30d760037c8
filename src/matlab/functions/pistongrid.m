% PISTONGRID  Pressure of a rectangular piston on a grid.
%
%   p = pistongrid (x, y, z, l, s, k)
%   p = pistongrid (x, y, z, l, s, k, nabscissas)
%   p = pistongrid (..., 'quiet')
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
%   nabscissas  order of the quadrature rule, 1 ... 512 (10 when left out, which is too
%               few for sides of some 7 wavelengths: see pistonorder), or a table
%               made by pistonrule.
%   'quiet'     shows no progress bar, which work of more than half a second has.
%
% Result
%
%   p           numel (x) by numel (y) by numel (z), complex double.
%
% Example: the plane y = 0 of a piston of 1 MHz in water
%
%   lambda = 1500 / 1e6;                      % m
%   x = (-75:75) * lambda / 15;
%   z = (1:300) * lambda / 15;
%   p = pistongrid (x, 0, z, 7.5 * lambda, 5 * lambda, 2 * pi / lambda, 20);
%   pistonplot (x, 0, z, p);
%
% Errors: "x, y and z must be real vectors."; "l must be a finite real number.", and so for s
% and k; "nabscissas must be an order, 1 ... 512, or a table made by pistonrule, which is not
% [x, w]."; and those of pistonfield's device and memory.
%
% See also: pistonfield, pistonplot, pistonarray, pistonorder.

function p = pistongrid (x, y, z, l, s, k, varargin)

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
  sizes = [numel(x), numel(y), numel(z)];

  evaluate = @(first, last, ~) piece (first, last, x, y, z, l, s, k, nabscissas);
  p = inpieces ('pistongrid', evaluate, prod (sizes), 2 ^ 21, 1, quiet);
  p = reshape (p, sizes);

end

function p = piece (first, last, x, y, z, l, s, k, nabscissas)

  [i, j, m] = ind2sub ([numel(x), numel(y), numel(z)], first:last);
  points = [x(i); y(j); z(m)];
  p = pistonfield_quiet (points, 0, l, s, k, 'cuda', nabscissas);

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
%!test # columns are axes too, and the order is 10 when left out
%! assert (pistongrid (x', y', z', 1, 2, 3), pistongrid (x, y, z, 1, 2, 3, 10));
%!test # one point
%! assert (size (pistongrid (0, 0, 1, 1, 1, 1)), [1, 1]);
%!test # a table of pistonrule
%! p = pistongrid (x, y, z, 1, 2, 3, pistonrule (10));
%! assert (max (abs (p(:) - pistongrid (x, y, z, 1, 2, 3)(:))) < 1e-6);
%!test # it prints nothing
%! assert (isempty (evalc ("p = pistongrid (x, y, z, 1, 2, 3);")));
%!error <p = pistongrid> pistongrid (1, 2, 3, 4, 5)
%!error <x, y and z must be real vectors> pistongrid (ones (2), 2, 3, 4, 5, 6)
%!error <x, y and z must be real vectors> pistongrid ([], 2, 3, 4, 5, 6)
%!error <x, y and z must be real vectors> pistongrid ("x", 2, 3, 4, 5, 6)
%!error <x, y and z must be real vectors> pistongrid (1i, 2, 3, 4, 5, 6)
%!error <s must be a finite real number> pistongrid (1, 2, 3, 4, {}, 6)
%!error <nabscissas must be an order, 1 ... 512> pistongrid (1, 2, 3, 4, 5, 6, 0)
%!error <a table made by pistonrule> pistongrid (1, 2, 3, 4, 5, 6, [[-1; 1] / sqrt(3), [1; 1]])
%!demo
%! lambda = 1500 / 1e6;
%! x = (-75:75) * lambda / 15;
%! z = (1:300) * lambda / 15;
%! p = pistongrid (x, 0, z, 7.5 * lambda, 5 * lambda, 2 * pi / lambda, 20);
%! pistonplot (x, 0, z, p);
