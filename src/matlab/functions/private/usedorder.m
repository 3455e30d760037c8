% used = usedorder (nabscissas)
%
% Describes how the pressures for an order or a table were computed, in the form of pistonfield_pressure.

function used = usedorder (nabscissas)

  order = size (nabscissas, 1);
  if (numel (nabscissas) == 1)
    order = floor (double (nabscissas));
  end
  used = struct ('orders', [order, order], 'precision', 'single', 'nodes', NaN, 'bound', NaN);

end
