% [nabscissas, tolerance, quiet] = readoptions (name, options)
%
% Reads the optional last arguments of a public function: the quadrature rule, empty if omitted, and then
% 'tolerance' with its value and 'quiet'. The identifiers of its errors begin with name, the name of that
% function.

function [nabscissas, tolerance, quiet] = readoptions (name, options)

  nabscissas = [];
  tolerance = [];
  quiet = false;
  if (~ isempty (options) && ~ istext (options{1}))
    nabscissas = options{1};
    options(1) = [];
    if (~ isomitted (nabscissas) && ~ isorder (nabscissas) && ~ istable (nabscissas))
      error ([name, ':nabscissas'], ...
             ['nabscissas must be an order from 1 to 512, or a table made by pistonrule. ' ...
              'Pack a table [x, w] with pistonrule (x, w). To pass a tolerance, write ''tolerance'', 1e-3.']);
    end
  end
  while (~ isempty (options))
    if (isword (options{1}, 'quiet'))
      quiet = true;
      options(1) = [];
    elseif (isword (options{1}, 'tolerance') && numel (options) > 1)
      tolerance = readtolerance (name, options{2});
      options(1:2) = [];
    else
      error ([name, ':options'], ...
             ['After k, pass an order or a table, or ''tolerance'' and a number; then ''quiet''. Nothing ' ...
              'else is allowed.']);
    end
  end
  if (~ isempty (nabscissas) && ~ isempty (tolerance))
    error ([name, ':both'], 'Pass an order or a tolerance, not both.');
  end
  if (isempty (tolerance))
    tolerance = 1e-4;
  end

end

function answer = istext (value)

  answer = ischar (value) || isa (value, 'string');

end

function answer = isomitted (value)

  answer = isnumeric (value) && isequal (size (value), [0, 0]);

end

function answer = isorder (value)

  answer = isnumeric (value) && isreal (value) && numel (value) == 1 && ~ issparse (value) ...
           && value >= 1 && double (value) < 513;

end

% Returns whether the value has the layout of pistonrule. A table [x, w] usually fails the check of the
% signs or of the sum.

function answer = istable (value)

  M = size (value, 1);
  answer = isa (value, 'double') && isreal (value) && ~ issparse (value) && ndims (value) == 2 ...
           && size (value, 2) == 2 && M >= 1 && M <= 512;
  if (answer)
    pairs = reshape (value, 2, M);
    half = floor ((M + 1) / 2);
    x = pairs(1,1:half);
    w = pairs(2,1:half);
    total = 2 * sum (w) - mod (M, 2) * w(half);
    answer = all (x >= -1.001 & x <= 0.001) && abs (total - 2) < 1e-3;
  end

end
