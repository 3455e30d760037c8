% array = singlepiston (l, s): the array, complete as from readarray, of one piston.

function array = singlepiston (l, s)

  array = struct ('l', l, 's', s, 'positions', zeros (3, 1), 'rotations', eye (3), 'weights', 1);

end
