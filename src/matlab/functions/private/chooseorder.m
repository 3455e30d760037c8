% [order, largest] = chooseorder (points, array, k, tolerance)
%
% Returns the lowest order whose error at the points is below the tolerance, and its largest error, both
% relative to the peak pressure, for an array from readarray. order is empty if no order is sufficient.
%
% Errors are differences from order 512. Those of orders close to it would look too small, so the highest order
% is 384.
%
% Of more than 1000 points only some are compared, and the order gets a margin for the others.

function [order, largest] = chooseorder (points, array, k, tolerance)

  highest = 384;
  sampled = size (points, 2) > 1000;
  if (sampled)
    points = hardestpoints (points, array, k, tolerance);
  end
  within = tolerance / (1 + sampled);        % the sample may miss the largest error

  pressure = @(n) arraypressure (points, array, k, n, 'pistonorder', true);
  best = pressure (512);
  peak = max ([abs(best); realmin]);
  errorof = @(n) max ([abs(pressure (n) - best); 0]) / peak;
  [order, largest] = lowest (errorof, within, highest);
  while (sampled && ~ isempty (order) && order < highest)
    order = min (highest, ceil (1.04 * order) + 1);
    largest = errorof (order);
    if (largest < within)
      break
    elseif (order == highest)
      order = [];
    end
  end

end

% Returns the lowest order from which on errors are below the tolerance, and its error. Errors go up and
% down before they stay small. So the search halves the order until it is too low, then descends in small
% steps from twice the last sufficient order, and bisects the remaining gap.

function [order, largest] = lowest (errorof, tolerance, highest)

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

% Divides a sufficient order by the factor until the next one is too low; returns the last sufficient one.

function order = descend (errorof, tolerance, order, factor)

  while (order > 1 && errorof (max (1, floor (order / factor))) < tolerance)
    order = max (1, floor (order / factor));
  end

end
