% Error against the order of the quadrature rule, and the order that pistonorder returns: order.png
%
% The rule has to resolve the phase along an edge.  The error stays large until it does, and then falls
% by a factor of ten or more for every two orders, down to the rounding error of single precision.  A
% larger piston, or points far to the side, need a higher order.

lambda = 1500 / 1e6;                        % 1 MHz in water, in metres
k = 2 * pi / lambda;
tolerance = 1e-4;                           % of the peak pressure

names = {'5 x 7.5 wavelengths', 'the same, far beside', '20 x 30 wavelengths'};
l = [7.5, 7.5, 30] * lambda;                % along y
s = [5, 5, 20] * lambda;                    % along x
reach = [3.75, 60, 15] * lambda;            % of the points along x
depth = [15, 15, 60] * lambda;              % and along z

orders = 2:64;
errors = zeros (3, numel (orders));
enough = zeros (1, 3);
for c = 1:3
  x = linspace (0, reach(c), 25);
  z = linspace (depth(c) / 60, depth(c), 40);
  pressure = @(order) reshape (pistongrid (x, 0, z, l(c), s(c), k, order), [], 1);
  best = pressure (512);
  for n = 1:numel (orders)
    errors(c,n) = max (abs (pressure (orders(n)) - best)) / max (abs (best));
  end
  [X, Z] = ndgrid (x, z);
  points = [X(:).'; zeros(1, numel (X)); Z(:).'];
  enough(c) = pistonorder (points, l(c), s(c), k, tolerance);
  fprintf ('%-22s order %2d for an error below %g\n', names{c}, enough(c), tolerance);
end

picture = newpicture (900, 560);
marked = errors(sub2ind (size (errors), 1:3, enough - orders(1) + 1));
semilogy (orders, errors(1,:), 'b', orders, errors(2,:), 'r', orders, errors(3,:), 'm', ...
          enough, marked, 'ko', orders([1, end]), tolerance * [1, 1], 'k--');
axis ([0, 64, 1e-7, 1]);
xlabel ('order of the rule');
ylabel ('largest error / peak pressure');
title ('Error of the quadrature rule, 1 MHz in water, single precision');
text (12, 2e-5, names{2}, 'color', 'r');
text (14, 2e-6, names{1}, 'color', 'b');
text (26, 3e-2, names{3}, 'color', 'm');
text (36, 1.8e-4, 'tolerance; circles: pistonorder', 'color', 'k');
savepicture (picture, 'order.png');
