% some = hardestpoints (points, array, k, tolerance)
%
% Returns some 700 of the points, among them those at which a piston of the array needs the highest orders
% for the tolerance, and those nearest to a piston, where the pressure is high.

function some = hardestpoints (points, array, k, tolerance)

  N = size (points, 2);
  spread = unique (1 + floor (N * mod ((1:150) * (sqrt (5) - 1) / 2, 1)));
  % Squared distances to the pistons' centres, divided by their squared diagonals, as a matrix product:
  % |x - c|^2 = -2 x.c + |c|^2 + |x|^2.
  M = numel (array.weights);
  c = array.positions;
  diagonals = max (sqrt (array.l .^ 2 + array.s .^ 2), realmin);
  spheres = [-2 * c; sum(c .^ 2, 1); ones(1, M)] ./ (diagonals .^ 2).';
  normals = reshape (array.rotations(:,3,:), 3, M);
  planes = [normals; -sum(normals .* c, 1)];
  distances = zeros (1, N);
  piece = max (1, floor (2 ^ 21 / M));
  for first = 1:piece:N
    these = first:min (N, first + piece - 1);
    place = [points(:,these); ones(1, numel (these))].';
    distances(these) = min ([place, sum(place(:,1:3) .^ 2, 2)] * spheres, [], 2);
  end
  [~, nearest] = sort (distances);          % NaN last
  known = unique ([nearest(1:min (N, 100)), spread]);
  peak = max ([abs(arraypressure (points(:,known), array, k, 128, 'pistonorder', true)); realmin]);

  % In front of a piston and far from it, the order changes slowly from point to point. These points
  % rank after all others, the nearest first.
  orders = -distances;
  for first = 1:piece:N
    these = first:min (N, first + piece - 1);
    place = [points(:,these); ones(1, numel (these))].';
    checked = place * planes < 0;
    if (M == 1)
      checked(:) = true;
    else
      checked = checked | [place, sum(place(:,1:3) .^ 2, 2)] * spheres < 1;
    end
    for m = find (any (checked, 1))
      here = these(checked(:,m));
      own = inframe (points(:,here), c(:,m), array.rotations(:,:,m));
      allowed = tolerance * peak / abs (array.weights(m));
      orders(here) = max (orders(here), ordersfor (own, array.l(m), array.s(m), k, allowed));
    end
  end
  orders(isnan (orders)) = -Inf;            % from NaN coordinates
  [~, ranked] = sort (orders, 'descend');
  some = points(:,unique ([ranked(spreadranks (N, 500)), known]));

end

% Estimates the order that the pressure of a piston needs at each of the points for an error below the
% tolerance. The estimate is good enough to rank the points, but is not a bound.

function orders = ordersfor (points, l, s, k, tolerance)

  x = abs (points(1,:));
  y = abs (points(2,:));
  z = points(3,:);
  l = abs (l);
  s = abs (s);
  k = abs (k);
  orders = max (foredge (y, l, x - s / 2, z, k, tolerance), foredge (x, s, y - l / 2, z, k, tolerance));

end

% Estimates the order for the nearer of two parallel edges. beside is the signed distance of its line from
% the projection of the point. The integral is at most the angle that the edge subtends at the projection,
% and smaller next to the edge.

function orders = foredge (along, side, beside, z, k, tolerance)

  first = max (along - side / 2, 0);        % the interval is split at the foot
  last = along + side / 2;
  apart = beside .^ 2;
  angle = min (abs (beside) .* (last - first) ./ (first .^ 2 + apart), 1);
  orders = forinterval (first, last, apart + z .^ 2, k, min (angle, k * abs (beside)) / tolerance);
  behind = z < 0;                           % the integrand has a pole at the foot
  if (any (behind))
    poles = forinterval (first(behind), last(behind), apart(behind), k, angle(behind) / tolerance);
    orders(behind) = max (orders(behind), poles);
  end

end

% Returns a quarter of the phase difference between the ends, plus the order that a singularity
% requires. squared is the square of the singularity's distance from the line. That order
% follows from the ellipse through the singularity whose foci are the ends.

function orders = forinterval (first, last, squared, k, ratio)

  a = sqrt (first .^ 2 + squared);
  b = sqrt (last .^ 2 + squared);
  ellipse = max ((a + b) ./ (last - first) - 1, 1e-9);
  orders = (k / 4 * (b - a) + log (max (ratio, 2)) ./ sqrt (8 * ellipse)) .* (ratio > 1);

end
