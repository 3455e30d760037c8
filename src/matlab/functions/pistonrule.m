% PISTONRULE  Table of a quadrature rule, in the layout that pistonfield reads.
%
%   rule = pistonrule (order)
%   rule = pistonrule (x, w)
%
% CAUTION: pistonfield does not read a table [x, w].  It reads the table column by column,
% as pairs: abscissa, weight, abscissa, weight ...  They are the non-positive half of the
% rule, from the most negative abscissa upward.  The rest is not read.  A table [x, w] gives
% wrong numbers without an error.  This function packs the table.
%
% Arguments
%
%   order       of the Gauss-Legendre rule, 1 to 512.
%   x, w        abscissas and weights of a symmetric rule on [-1, 1], in any order, at most
%               512.
%
% Result
%
%   rule        M x 2, where M is the order: the last argument of pistonfield.
%
% Example
%
%   [x, w] = deal ([-1; 1] / sqrt (3), [1; 1]);
%   p = pistonfield ([0; 0; 1], 0, 1, 1, 1, 'cuda', pistonrule (x, w));
%
% Errors: "order must be an integer from 1 to 512.", "x and w must be real vectors of the same
% length, at most 512." and "x and w must be a symmetric rule on [-1, 1], with weights that sum
% to 2."
%
% See also: pistonfield, pistonorder.

function rule = pistonrule (x, w)

  if (nargin == 1)
    [x, w] = gausslegendre (x);
  elseif (nargin ~= 2)
    error ('pistonrule:arguments', ...
           'Wrong number of arguments. Call it as rule = pistonrule (order) or rule = pistonrule (x, w).');
  end
  if (~ isreals (x) || ~ isreals (w) || numel (x) ~= numel (w))
    error ('pistonrule:vectors', 'x and w must be real vectors of the same length, at most 512.');
  end
  [x, ascending] = sort (full (double (x(:))));
  w = full (double (w(:)));
  w = w(ascending);
  M = numel (x);
  tolerance = 1e-6;                         % for rules of single precision
  if (any (abs (x) > 1 + tolerance) || any (abs (x + flipud (x)) > tolerance) ...
      || any (abs (w - flipud (w)) > tolerance) || abs (sum (w) - 2) > tolerance)
    error ('pistonrule:rule', ...
           'x and w must be a symmetric rule on [-1, 1], with weights that sum to 2.');
  end

  half = 1:floor ((M + 1) / 2);
  pairs = zeros (2, M);
  pairs(:,half) = [x(half), w(half)].';
  rule = reshape (pairs, M, 2);

end

function answer = isreals (values)

  answer = isnumeric (values) && isreal (values) && isvector (values) && numel (values) <= 512 ...
           && all (isfinite (values));

end

% Computes the rule from the eigenvalues and the first components of the eigenvectors of the matrix of
% the polynomials' recurrence.

function [x, w] = gausslegendre (order)

  if (~ isnumeric (order) || ~ isreal (order) || numel (order) ~= 1 ...
      || ~ any (double (order) == 1:512))
    error ('pistonrule:order', 'order must be an integer from 1 to 512.');
  end
  order = full (double (order));
  n = 1:order - 1;
  recurrence = zeros (order);
  recurrence(order+1:order+1:end) = n ./ sqrt (4 * n .^ 2 - 1);  % right of the diagonal
  [vectors, values] = eig (recurrence + recurrence.');
  [x, ascending] = sort (diag (values));    % eig does not guarantee their order
  w = 2 * vectors(1,ascending).' .^ 2;
  x = (x - flipud (x)) / 2;
  w = (w + flipud (w)) / 2;

end

%!test # the table holds pairs of the non-positive half, column by column
%! table = pistonrule ([-0.5, 0, 0.5], [0.75, 0.5, 0.75]);
%! assert (size (table), [3, 2]);
%! assert (table(1:4), [-0.5, 0.75, 0, 0.5]);
%! assert (size (pistonrule (1)), [1, 2]);
%! assert (pistonrule (1), [0, 2]);
%!test # x and w may be in any order and of any shape
%! assert (pistonrule ([0.5; -0.5; 0], [0.75, 0.75, 0.5]), pistonrule ([-0.5, 0, 0.5], [0.75, 0.5, 0.75]));
%!test # rules in single precision are accepted, less symmetric ones are rejected
%! for order = [3, 10, 512]
%!   table = pistonrule (order);
%!   half = floor (order / 2);
%!   x = single ([table(1:2:2*half), zeros(1, mod (order, 2)), -fliplr(table(1:2:2*half))]);
%!   w = single ([table(2:2:order+1), fliplr(table(2:2:2*half))]);
%!   assert (pistonrule (x, w), table, 1e-6);
%!   w(1) += 1e-5;
%!   w(end) -= 1e-5;
%!   fail ("pistonrule (x, w)", "symmetric rule");
%! endfor
%!test # the rule of order n is exact for polynomials of degree 2n - 1
%! for order = [2:20, 63, 64, 511, 512]
%!   table = pistonrule (order);
%!   x = table(1:2:order + mod (order, 2))';
%!   w = table(2:2:order + 1)';
%!   half = numel (x);
%!   assert (half, floor ((order + 1) / 2));
%!   middle = mod (order, 2) == 1;
%!   assert (2 * sum (w) - middle * w(end), 2, 1e-13);
%!   for power = [2, order - mod(order, 2), 2 * order - 2] # the highest even power
%!     assert (2 * sum (w .* x .^ power), 2 / (power + 1), 1e-13);
%!   endfor
%! endfor
%!test # a table gives the same field as its order
%! points = [0, 1, 3; 0, 2, -1; 1, 0.5, 4];
%! for order = [1, 2, 3, 10, 33, 512]
%!   p = pistonfield_quiet (points, 0, 7.5, 5, 2, "cuda", order);
%!   q = pistonfield_quiet (points, 0, 7.5, 5, 2, "cuda", pistonrule (order));
%!   assert (max (abs (p - q)) < 1e-6);
%! endfor
%!test # an unpacked table [x, w] gives wrong numbers
%! x = [-1; 1] / sqrt (3);
%! w = [1; 1];
%! right = pistonfield_quiet ([0; 0; 1], 0, 1, 1, 1, "cuda", 2);
%! assert (abs (pistonfield_quiet ([0; 0; 1], 0, 1, 1, 1, "cuda", pistonrule (x, w)) - right) < 1e-6);
%! assert (abs (pistonfield_quiet ([0; 0; 1], 0, 1, 1, 1, "cuda", [x, w]) - right) > 1e-2);
%!error <Call it as> pistonrule ()
%!error <must be an integer> pistonrule (0)
%!error <must be an integer> pistonrule (513)
%!error <must be an integer> pistonrule (2.5)
%!error <must be an integer> pistonrule (NaN)
%!error <must be an integer> pistonrule ("x")
%!error <the same length> pistonrule ([-1, 1], 1)
%!error <the same length> pistonrule ([-1, NaN], [1, 1])
%!error <the same length> pistonrule ([], [])
%!error <symmetric rule> pistonrule ([0, 1], [1, 1])
%!error <symmetric rule> pistonrule ([-1, 1], [0.5, 0.5])
%!error <symmetric rule> pistonrule ([-2, 2], [1, 1])
