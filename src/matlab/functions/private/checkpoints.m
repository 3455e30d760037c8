% checkpoints (name, points): an error of the function of that name unless the points are such.

function checkpoints (name, points)

  if (~ isa (points, 'double') || ~ isreal (points) || issparse (points) || size (points, 1) ~= 3 ...
      || ndims (points) > 2 || isempty (points))
    error ([name, ':points'], ...
           'points must be a full real matrix of doubles, of three rows: a point is a column.');
  end

end
