% [order, largest] = chooseorder (points, array, k, tolerance, reference)
%
% The order whose error at the points is below the tolerance, of their peak pressure, for an array of
% readarray; and its largest error. order is empty where there is none. Errors are differences from the
% reference, an order that is doubled, to 512 at most, until it is four times the order that is
% compared with it: errors that fall slowly would be less from one order to the next than they are.
%
% Of more than 1000 points some are compared, and the order has a margin for the others.

function [order, largest] = chooseorder (points, array, k, tolerance, reference)

  sampled = size (points, 2) > 1000;
  if (sampled)
    points = hardestpoints (points, array, k, tolerance);
  end
  within = tolerance / (1 + sampled);        % the largest of many errors is not in the sample
  if (anybehind (points, array))
    reference = 512;                        % lower orders agree there that all miss a pole
  end

  order = [];
  while (isempty (order) && reference <= 512)
    pressure = @(n) arraypressure (points, array, k, n, '', true);
    best = pressure (reference);
    peak = max ([abs(best); realmin]);
    errorof = @(n) max ([abs(pressure (n) - best); 0]) / peak;
    [order, largest] = lowest (errorof, within, reference);
    reference = 2 * reference;
  end
  while (sampled && ~ isempty (order) && order < 384)
    order = min (384, ceil (1.04 * order) + 1);
    largest = errorof (order);
    if (largest < within)
      break
    elseif (order == 384)
      order = [];
    end
  end

end

% Whether a point lies behind a piston.

function answer = anybehind (points, array)

  normals = reshape (array.rotations(:,3,:), 3, []);
  behind = points.' * normals < sum (normals .* array.positions, 1);
  answer = any (behind(:));

end

% The lowest order from which on errors are below the tolerance, and its error. Before they stay small
% they go up and down: so it goes downward in steps to the half until one is too low, then from twice
% the last one in small steps, and the gap that is left is bisected.

function [order, largest] = lowest (errorof, tolerance, reference)

  highest = reference / 4;
  if (reference == 512)
    highest = 384;                          % there is no higher reference
  end
  order = [];
  largest = errorof (highest);
  if (~ (largest < tolerance))
    return
  end

  order = descend (errorof, tolerance, highest, 2);
  order = descend (errorof, tolerance, min (highest, 2 * order), 1.1);
  toolow = floor (order / 1.1) * (order > 1);
  while (order - toolow > 1)
    n = floor ((order + toolow) / 2);
    if (errorof (n) < tolerance)
      order = n;
    else
      toolow = n;
    end
  end
  largest = errorof (order);

end

% The last order before one that is too low, from one that is not downward by that factor.

function order = descend (errorof, tolerance, order, factor)

  while (order > 1 && errorof (max (1, floor (order / factor))) < tolerance)
    order = max (1, floor (order / factor));
  end

end
