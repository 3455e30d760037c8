% [order, largest] = chooseorder (points, array, k, tolerance, reference)
%
% Returns the lowest order whose error at the points is below the tolerance, and its largest error, both
% relative to the peak pressure, for an array from readarray. order is empty if no order is sufficient.
%
% The error of an order is measured against a reference order that is at least four times as high (384
% against 512). Against a closer reference, an error that decreases slowly would look too small. If no order
% meets the tolerance, the reference is doubled, up to 512.
%
% Of more than 1000 points only some are compared, and the order gets a margin for the others.

function [order, largest] = chooseorder (points, array, k, tolerance, reference)

  sampled = size (points, 2) > 1000;
  if (sampled)
    points = hardestpoints (points, array, k, tolerance);
  end
  within = tolerance / (1 + sampled);        % the sample may miss the largest error
  if (anybehind (points, array))
    reference = 512;                        % all lower orders may miss a pole, and still agree
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

% Returns whether a point lies behind a piston.

function answer = anybehind (points, array)

  normals = reshape (array.rotations(:,3,:), 3, []);
  behind = points.' * normals < sum (normals .* array.positions, 1);
  answer = any (behind(:));

end

% Returns the lowest order from which on errors are below the tolerance, and its error. Errors go up and
% down before they stay small. So the search halves the order until it is too low, then descends in small
% steps from twice the last sufficient order, and bisects the remaining gap.

function [order, largest] = lowest (errorof, tolerance, reference)

  highest = reference / 4;
  if (reference == 512)
    highest = 384;                          % 512 is the highest reference
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

% Divides a sufficient order by the factor until the next one is too low; returns the last sufficient one.

function order = descend (errorof, tolerance, order, factor)

  while (order > 1 && errorof (max (1, floor (order / factor))) < tolerance)
    order = max (1, floor (order / factor));
  end

end
