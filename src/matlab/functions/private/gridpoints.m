% points = gridpoints (axes_, first, last)
%
% Returns the points first ... last of the grid with these axes, in the order of ndgrid, in columns.

function points = gridpoints (axes_, first, last)

  [i, j, m] = ind2sub (cellfun (@numel, axes_), first:last);
  points = [axes_{1}(i); axes_{2}(j); axes_{3}(m)];

end
