% checkpoints (name, points)
%
% Raises an error unless points is a list of points. The identifier of the error begins
% with name.

function checkpoints (name, points)

  if (~ isa (points, 'double') || ~ isreal (points) || issparse (points) || size (points, 1) ~= 3 ...
      || ndims (points) > 2 || isempty (points))
    error ([name, ':points'], ...
           'points must be a full real double matrix with three rows, one column per point.');
  end

end
