% checklengths (name, sides, coordinates): an error of the function of that name unless single precision
% has the squares of all lengths, which pistonfield does not check.

function checklengths (name, sides, coordinates)

  sides = abs (sides(sides ~= 0));
  if (any (sides < 1e-18) || any (sides > 1e18) || any (abs (coordinates(:)) > 1e18))
    error ([name, ':lengths'], ...
           'Sides must be 1e-18 ... 1e18 and coordinates at most 1e18: choose another unit of length.');
  end

end
