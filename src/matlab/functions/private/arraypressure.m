% [p, used] = arraypressure (where, array, k, nabscissas, name, quiet)
%
% Returns the sum of the weighted pressures of an array from readarray, by the quadrature rule nabscissas, and
% how it was computed: on the device by pistonfield, or for a complex k, of which pistonfield reads the real
% part, as with a tolerance. where is a list of points, or the axes of a grid. Long work shows a progress bar, with name as its title,
% unless quiet is true.

function [p, used] = arraypressure (where, array, k, nabscissas, name, quiet)

  used = usedorder (nabscissas);
  if (~ isreal (k))
    [p, used] = pressurewithin (name, where, array, k, used.orders(1), quiet);
    return
  end
  if (iscell (where))
    sizes = cellfun (@numel, where);
    points = @(first, last) gridpoints (where, first, last);
  else
    sizes = [size(where, 2), 1];
    points = @(first, last) where(:,first:last);
  end
  % Pistons of equal sides share one call: starting and releasing a GPU takes longer than computing
  % millions of points.
  [~, ~, kind] = unique ([array.l, array.s], 'rows');
  members = accumarray (kind(:), 1);
  evaluate = @(first, last, group) ...
    superposition (points (first, last), array, find (kind == group), k, nabscissas);
  piece = max (1, floor (2 ^ 20 / max (members)));
  p = reshape (inpieces (name, evaluate, prod (sizes), piece, members, quiet), sizes);

end

function p = superposition (points, array, members, k, nabscissas)

  own = zeros ([size(points), numel(members)]);
  for n = 1:numel (members)
    m = members(n);
    own(:,:,n) = inframe (points, array.positions(:,m), array.rotations(:,:,m));
  end
  each = pistonfield_quiet (reshape (own, 3, []), 0, array.l(members(1)), array.s(members(1)), k, ...
                            'cuda', nabscissas);
  each = reshape (each, [], numel (members));
  p = complex (zeros (size (points, 2), 1));
  for n = 1:numel (members)
    p = p + array.weights(members(n)) * each(:,n);
  end

end
