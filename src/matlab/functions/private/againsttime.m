% [p, t, used] = againsttime (name, what, where, pistons, medium, excitation, options)
%
% Calls pistonfield_pressure (what, ...) for a pulse or an echo of the function name: at points, or on the grid
% of axes. pistons is a cell array of arrays from readdelayed, and options is from readpulseoptions.

function [p, t, used] = againsttime (name, what, where, pistons, medium, excitation, options)

  sizes = size (where, 2);
  points = where;
  if (iscell (where))
    sizes = cellfun (@numel, where);
    points = gridpoints (where, 1, prod (sizes));
  end
  rate = options.rate;
  if (isempty (rate))
    rate = excitation.rate;
  end
  pistons = cellfun (@librarypistons, pistons, 'UniformOutput', false);
  [p, t, used] = longwork (name, options.quiet, what, points, pistons{:}, medium, excitation, rate, ...
                           options.times, options.tolerance);
  p = reshape (p, [numel(t), sizes]);

end
