% [nabscissas, quiet] = readoptions (name, options): what may follow the other arguments of the
% function of that name, in this order: the quadrature rule, and 'quiet'.

function [nabscissas, quiet] = readoptions (name, options)

  nabscissas = 10;
  quiet = ~ isempty (options) && ischar (options{end});
  if (quiet)
    if (~ strcmp (options{end}, 'quiet'))
      error ([name, ':option'], 'The only option is ''quiet''.');
    end
    options(end) = [];
  end
  if (numel (options) > 1)
    error ([name, ':arguments'], 'There are too many arguments.');
  end
  if (~ isempty (options))
    nabscissas = options{1};
  end

end
