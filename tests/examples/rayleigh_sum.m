% The pressure of a piston at points (3 x N) by a double sum over its cells, with the distance
% from the centre of each. This is independent of the module's method.
function p = rayleigh_sum (points, l, s, k, cells)
  x = ((1:cells) - (cells + 1) / 2) * s / cells;
  y = ((1:cells) - (cells + 1) / 2) * l / cells;
  [X, Y] = ndgrid (x, y);
  p = zeros (columns (points), 1);
  for n = 1:columns (points)
    R = sqrt ((points(1,n) - X(:)) .^ 2 + (points(2,n) - Y(:)) .^ 2 + points(3,n) ^ 2);
    p(n) = k / (2 * pi) * sum (exp (-1i * k * R) ./ R) * l * s / cells ^ 2;
  endfor
endfunction
