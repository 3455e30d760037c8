% array = singlepiston (l, s)
%
% Returns the array of one piston, complete as from readarray.

function array = singlepiston (l, s)

  array = struct ('l', l, 's', s, 'positions', zeros (3, 1), 'rotations', eye (3), 'weights', 1);

end
