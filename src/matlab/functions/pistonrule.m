% PISTONRULE  Table of a quadrature rule, in the layout that pistonfield reads.
%
%   rule = pistonrule (order)
%   rule = pistonrule (x, w)
%
% CAUTION: pistonfield does not read a table [x, w].  It takes the values as they are
% stored, column by column, in pairs: abscissa, weight, abscissa, weight ... of the
% non-positive half of the rule, from the most negative abscissa upward; the rest is not
% read.  A table [x, w] gives wrong numbers without a word.  This function packs it.
%
% Arguments
%
%   order       of the Gauss-Legendre rule, 1 ... 512.
%   x, w        abscissas and weights of a rule on [-1, 1]: symmetric, in any order, 512
%               at most.
%
% Result
%
%   rule        M x 2, M the order: the last argument of pistonfield.
%
% Example
%
%   [x, w] = deal ([-1; 1] / sqrt (3), [1; 1]);
%   p = pistonfield ([0; 0; 1], 0, 1, 1, 1, 'cuda', pistonrule (x, w));
%
% Errors: "order must be a whole number, 1 ... 512.", "x and w must be real vectors of one
% length, 1 ... 512." and "x and w must be a symmetric rule on [-1, 1], whose weights sum to
% 2."
%
% See also: pistonfield, pistonorder.

function rule = pistonrule (x, w)

  if (nargin == 1)
    [x, w] = gausslegendre (x);
  elseif (nargin ~= 2)
    error ('pistonrule:arguments', ...
           'Call it as rule = pistonrule (order) or rule = pistonrule (x, w).');
  end
  if (~ isreals (x) || ~ isreals (w) || numel (x) ~= numel (w))
    error ('pistonrule:vectors', 'x and w must be real vectors of one length, 1 ... 512.');
  end
  [x, ascending] = sort (full (double (x(:))));
  w = full (double (w(:)));
  w = w(ascending);
  M = numel (x);
  tolerance = 1e-6;                         % for rules of single precision
  if (any (abs (x) > 1 + tolerance) || any (abs (x + flipud (x)) > tolerance) ...
      || any (abs (w - flipud (w)) > tolerance) || abs (sum (w) - 2) > tolerance)
    error ('pistonrule:rule', ...
           'x and w must be a symmetric rule on [-1, 1], whose weights sum to 2.');
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

% Eigenvalues and first components of the eigenvectors of the recurrence of the polynomials.

function [x, w] = gausslegendre (order)

  if (~ isnumeric (order) || ~ isreal (order) || numel (order) ~= 1 ...
      || ~ any (double (order) == 1:512))
    error ('pistonrule:order', 'order must be a whole number, 1 ... 512.');
  end
  order = full (double (order));
  n = 1:order - 1;
  recurrence = zeros (order);
  recurrence(order+1:order+1:end) = n ./ sqrt (4 * n .^ 2 - 1);  % right of the diagonal
  [vectors, values] = eig (recurrence + recurrence.');
  [x, ascending] = sort (diag (values));    % which no host promises
  w = 2 * vectors(1,ascending).' .^ 2;
  x = (x - flipud (x)) / 2;
  w = (w + flipud (w)) / 2;

end

%!test # the layout: pairs of the non-positive half, in the order in which they are stored
%! table = pistonrule ([-0.5, 0, 0.5], [0.75, 0.5, 0.75]);
%! assert (size (table), [3, 2]);
%! assert (table(1:4), [-0.5, 0.75, 0, 0.5]);
%! assert (size (pistonrule (1)), [1, 2]);
%! assert (pistonrule (1), [0, 2]);
%!test # in any order, of any shape
%! assert (pistonrule ([0.5; -0.5; 0], [0.75, 0.75, 0.5]), pistonrule ([-0.5, 0, 0.5], [0.75, 0.5, 0.75]));
%!test # rules of single precision, and none that is lopsided by more
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
%!test # the rules of every order integrate what they should
%! for order = [2:20, 63, 64, 511, 512]
%!   table = pistonrule (order);
%!   x = table(1:2:order + mod (order, 2))';
%!   w = table(2:2:order + 1)';
%!   half = numel (x);
%!   assert (half, floor ((order + 1) / 2));
%!   middle = mod (order, 2) == 1;
%!   assert (2 * sum (w) - middle * w(end), 2, 1e-13);
%!   for power = [2, order - mod(order, 2), 2 * order - 2] # the highest that it can
%!     assert (2 * sum (w .* x .^ power), 2 / (power + 1), 1e-13);
%!   endfor
%! endfor
%!test # the module reads a table as it reads the order
%! points = [0, 1, 3; 0, 2, -1; 1, 0.5, 4];
%! for order = [1, 2, 3, 10, 33, 512]
%!   p = pistonfield_quiet (points, 0, 7.5, 5, 2, "cuda", order);
%!   q = pistonfield_quiet (points, 0, 7.5, 5, 2, "cuda", pistonrule (order));
%!   assert (max (abs (p - q)) < 1e-6);
%! endfor
%!test # what happens to those who pass [x, w]
%! x = [-1; 1] / sqrt (3);
%! w = [1; 1];
%! right = pistonfield_quiet ([0; 0; 1], 0, 1, 1, 1, "cuda", 2);
%! assert (abs (pistonfield_quiet ([0; 0; 1], 0, 1, 1, 1, "cuda", pistonrule (x, w)) - right) < 1e-6);
%! assert (abs (pistonfield_quiet ([0; 0; 1], 0, 1, 1, 1, "cuda", [x, w]) - right) > 1e-2);
%!error <Call it as> pistonrule ()
%!error <whole number> pistonrule (0)
%!error <whole number> pistonrule (513)
%!error <whole number> pistonrule (2.5)
%!error <whole number> pistonrule (NaN)
%!error <whole number> pistonrule ("x")
%!error <one length> pistonrule ([-1, 1], 1)
%!error <one length> pistonrule ([-1, NaN], [1, 1])
%!error <one length> pistonrule ([], [])
%!error <symmetric rule> pistonrule ([0, 1], [1, 1])
%!error <symmetric rule> pistonrule ([-1, 1], [0.5, 0.5])
%!error <symmetric rule> pistonrule ([-2, 2], [1, 1])
