% The pressure of a piston at points (3 x N), by a literal implementation of the formula in double
% precision: four single integrals with the symmetric rule of M nodes whose non-positive half is x,
% w. bound is the bound on single-precision errors, 3 * 2^-24 * (1 + k R), where R is the distance
% to the farthest corner.
function [p, bound] = literal_pressure (points, l, s, k, x, w, M)
  if (mod (M, 2) == 1)
    x = [x(1:end-1); 0; -x(1:end-1)];
    w = [w; w(1:end-1)];
  else
    x = [x; -x];
    w = [w; w];
  endif
  p = zeros (columns (points), 1);
  for n = 1:columns (points)
    u = abs (points(1,n));
    v = abs (points(2,n));
    z = points(3,n);
    S = edges (u - s / 2, u + s / 2, v, l / 2, z, k, x, w) ...
        + edges (v - l / 2, v + l / 2, u, s / 2, z, k, x, w);
    p(n) = -1i * S / (2 * pi);
  endfor
  R = sqrt ((abs (points(1,:)) + s / 2) .^ 2 + (abs (points(2,:)) + l / 2) .^ 2 + points(3,:) .^ 2)';
  bound = 3 * 2^-24 * (1 + abs (k) * R);
endfunction

% Two parallel edges at the signed distances d1 and d2, from v - b to v + b. If the foot of the
% perpendicular lies beyond their ends, there is one integral; otherwise there are two, which
% meet at the foot.
function S = edges (d1, d2, v, b, z, k, x, w)
  D = @(lo, hi) d1 * F (d1, lo, hi, z, k, x, w) - d2 * F (d2, lo, hi, z, k, x, w);
  if (v > b)
    S = D (v - b, v + b);
  elseif (v > double (single (1e-7)))
    S = D (0, v + b) + D (v - b, 0);
  else
    S = 2 * D (0, v + b);
  endif
endfunction

function sum_of_nodes = F (d, lo, hi, z, k, x, w)
  sum_of_nodes = 0;
  if (lo == hi)
    return;
  endif
  h = (hi - lo) / 2;
  sigma = (hi + lo) / 2 + h * x;
  square = d ^ 2 + sigma .^ 2;
  sum_of_nodes = sum (h * w .* (exp (-1i * k * sqrt (z ^ 2 + square)) - exp (-1i * k * z)) ./ square);
endfunction
