% array = singlepiston (l, s)
%
% Returns an array of one piston, in the form that readarray returns.

function array = singlepiston (l, s)

  array = struct ('l', l, 's', s, 'positions', zeros (3, 1), 'rotations', eye (3), 'weights', 1);

end
