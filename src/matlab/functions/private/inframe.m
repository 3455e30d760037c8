% own = inframe (points, centre, rotation): the points in the coordinates of a piston. Not a product
% of matrices, whose last digit may depend on how many columns there are.

function own = inframe (points, centre, rotation)

  d = points - centre;
  own = rotation(1,:).' .* d(1,:) + rotation(2,:).' .* d(2,:) + rotation(3,:).' .* d(3,:);

end
