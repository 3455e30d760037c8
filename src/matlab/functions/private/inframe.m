% own = inframe (points, centre, rotation)
%
% Returns the points in the coordinates of a piston. A matrix product is avoided, since its last digit may
% depend on the number of columns.

function own = inframe (points, centre, rotation)

  d = points - centre;
  own = rotation(1,:).' .* d(1,:) + rotation(2,:).' .* d(2,:) + rotation(3,:).' .* d(3,:);

end
