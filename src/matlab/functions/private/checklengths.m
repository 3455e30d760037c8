% checklengths (name, sides, coordinates, ...)
%
% Raises an error if the square of a length is out of range in single precision. The identifier
% of the error begins with name. pistonfield does not check this.

function checklengths (name, sides, varargin)

  sides = abs (sides(sides ~= 0));
  far = cellfun (@(coordinates) any (abs (coordinates(:)) > 1e18), varargin);
  if (any (sides < 1e-18) || any (sides > 1e18) || any (far))
    error ([name, ':lengths'], ...
           ['Sides must be from 1e-18 to 1e18 and coordinates at most 1e18 in magnitude: choose another ' ...
            'unit of length.']);
  end

end
