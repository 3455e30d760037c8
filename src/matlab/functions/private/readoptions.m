% [nabscissas, quiet] = readoptions (name, options): what may follow the other arguments of the
% function of that name, in this order: the quadrature rule, empty when it is left out, and 'quiet'.

function [nabscissas, quiet] = readoptions (name, options)

  nabscissas = [];
  quiet = ~ isempty (options) && (ischar (options{end}) || isa (options{end}, 'string'));
  if (quiet)
    if (~ isequal (char (options{end}), 'quiet'))
      error ([name, ':option'], 'The only option is ''quiet'', which comes last.');
    end
    options(end) = [];
  end
  if (numel (options) > 1)
    error ([name, ':arguments'], 'There are too many arguments: after k come the order and ''quiet''.');
  end
  if (~ isempty (options))
    nabscissas = options{1};
    if (~ isleftout (nabscissas) && ~ isorder (nabscissas) && ~ istable (nabscissas))
      error ([name, ':nabscissas'], ...
             ['nabscissas must be an order, 1 ... 512, or a table made by pistonrule, ' ...
              'which is not [x, w].']);
    end
  end

end

function answer = isleftout (value)

  answer = isnumeric (value) && isequal (size (value), [0, 0]);

end

function answer = isorder (value)

  answer = isnumeric (value) && isreal (value) && numel (value) == 1 && ~ issparse (value) ...
           && value >= 1 && double (value) < 513;

end

% In the layout of pistonrule: what it packs has these signs and this sum, [x, w] as a rule has not.

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
