% The non-positive half of the Gauss-Legendre rule of order n in double precision, as columns, from
% the most negative node upward: zeros of the Legendre polynomial, by Newton's method.
function [x, w] = gauss_legendre_half (n)
  x = -cos (pi * ((1:(n + 1) / 2)' - 0.25) / (n + 0.5));
  do
    before = ones (size (x));
    P = x;
    for m = 2:n
      [before, P] = deal (P, ((2 * m - 1) * x .* P - (m - 1) * before) / m);
    endfor
    slope = n * (before - x .* P) ./ (1 - x .^ 2);
    step = P ./ slope;
    x -= step;
  until (max (abs (step)) < 1e-14)
  w = 2 ./ ((1 - x .^ 2) .* slope .^ 2);
endfunction
