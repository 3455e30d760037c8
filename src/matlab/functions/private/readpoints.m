% points = readpoints (name, points)
%
% Checks points, or returns the axes {x, y, z} of a grid as readaxes does. The identifiers of errors begin with
% name.

function points = readpoints (name, points)

  if (iscell (points))
    points = readaxes (name, points);
  else
    checkpoints (name, points);
  end

end
