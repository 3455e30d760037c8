% PISTONORDER  Smallest order of the quadrature rule for a tolerance.
%
%   order = pistonorder (points, l, s, k, tolerance)
%   [order, error] = pistonorder (...)
%
% Compares the pressures at a sample of the points with those of order 512: of the orders
% 256, 128 ... downward until one is not within the tolerance, and then, as errors go up
% and down before they stay small, of one after the other from four times that order
% downward until one is not.  Where order 256 is not, none is returned.
%
% Arguments
%
%   points      3 x N real double, as for pistonfield.  Of more than 1000, 1000 are taken,
%               spread over the list: leave a margin below your own tolerance.  For an
%               array, the points as its outermost pistons see them: points less a column
%               of positions.
%   l, s, k     sides and wave number, as for pistonfield.
%   tolerance   largest error over the peak pressure, 1e-6 at least: single precision has
%               no more digits.
%
% Result
%
%   order       for pistonfield, pistongrid and pistonarray.
%   error       its largest error in the sample, over the peak pressure.
%
% Example: for a grid
%
%   [X, Y, Z] = ndgrid (-10:10, 0, 1:40);
%   order = pistonorder ([X(:)'; Y(:)'; Z(:)'], 7.5, 5, 2 * pi, 1e-4)
%
% Errors: "points must be ...", "l must be a finite real number.", and so for s and k;
% "tolerance must be a number, 1e-6 at least." and "No order up to 256 has an error below
% the tolerance. ..."
%
% See also: pistonfield, pistonrule.

function [order, largest] = pistonorder (points, l, s, k, tolerance)

  if (nargin ~= 5)
    error ('pistonorder:arguments', ...
           'Call it as order = pistonorder (points, l, s, k, tolerance).');
  end
  checkpoints ('pistonorder', points);
  l = readnumber ('pistonorder', 'l', l);
  s = readnumber ('pistonorder', 's', s);
  k = readnumber ('pistonorder', 'k', k);
  if (~ isnumeric (tolerance) || ~ isreal (tolerance) || numel (tolerance) ~= 1 || ~ (tolerance >= 1e-6))
    error ('pistonorder:tolerance', 'tolerance must be a number, 1e-6 at least.');
  end
  if (size (points, 2) > 1000)
    points = points(:,round (linspace (1, size (points, 2), 1000)));
  end

  pressure = @(n) pistonfield_quiet (points, 0, l, s, k, 'cuda', n);
  best = pressure (512);
  peak = max ([abs(best); realmin]);
  errorof = @(n) max (abs (pressure (n) - best)) / peak;

  order = 256;
  if (~ (errorof (order) < tolerance))
    error ('pistonorder:none', ...
           ['No order up to 256 has an error below the tolerance. Are points, sides and k in one ' ...
            'unit, k = 2 pi / wavelength?']);
  end
  while (order > 1 && errorof (order / 2) < tolerance)
    order = order / 2;
  end
  order = min (256, 2 * order);
  largest = errorof (order);
  while (order > 1)
    lower = errorof (order - 1);
    if (~ (lower < tolerance))
      break;
    end
    order = order - 1;
    largest = lower;
  end

end

%!shared points, best
%! [X, Y, Z] = ndgrid (linspace (-6, 6, 7), linspace (-6, 6, 7), [0.5, 2, 10, 40]);
%! points = [X(:)'; Y(:)'; Z(:)'];
%! best = pistonfield_quiet (points, 0, 7.5, 5, 2 * pi, "cuda", 512);
%!test # from this order on all are within the tolerance, and the one before is not
%! for tolerance = [1e-2, 1e-3, 1e-5]
%!   [order, err] = pistonorder (points, 7.5, 5, 2 * pi, tolerance);
%!   errors = arrayfun (@(n) max (abs (pistonfield_quiet (points, 0, 7.5, 5, 2 * pi, "cuda", n) - best)), 1:128) ...
%!            / max (abs (best));
%!   assert (order, find (errors >= tolerance, 1, "last") + 1);
%!   assert (err, errors(order));
%! endfor
%!test # also where errors go up again
%! R = 10;
%! few = [linspace(-R, R, 6); linspace(R / 2, -R, 6); linspace(R / 20, R, 6)];
%! exact = pistonfield_quiet (few, 0, 5, 51, 2 * pi, "cuda", 512);
%! errors = arrayfun (@(n) max (abs (pistonfield_quiet (few, 0, 5, 51, 2 * pi, "cuda", n) - exact)), 1:256) ...
%!          / max (abs (exact));
%! assert (errors(16) < 0.1);
%! last = find (errors >= 0.1, 1, "last");
%! assert (last > 16);
%! assert (pistonorder (few, 5, 51, 2 * pi, 0.1), last + 1);
%!test # no pressure needs no order
%! assert (pistonorder ([0; 0; 1], 0, 1, 1, 1e-3), 1);
%!test # order 1, where any is good enough
%! assert (pistonorder ([0; 0; 1], 1e-3, 1e-3, 1, 0.5), 1);
%!test # a long list is sampled from end to end
%! many = repmat (points, 1, 50);
%! order = pistonorder (many, 7.5, 5, 2 * pi, 1e-3);
%! assert (abs (order - pistonorder (points, 7.5, 5, 2 * pi, 1e-3)) <= 1);
%!error <No order up to 256> pistonorder ([4000; 4000; 1], 7000, 7000, 2 * pi, 1e-6)
%!error <tolerance must be> pistonorder (points, 1, 1, 1, 1e-7)
%!error <tolerance must be> pistonorder (points, 1, 1, 1, "a")
%!error <tolerance must be> pistonorder (points, 1, 1, 1, NaN)
%!error <order = pistonorder> pistonorder (points, 1, 1, 1)
%!error <s must be a finite real number> pistonorder (points, 1, {}, 1, 1e-3)
