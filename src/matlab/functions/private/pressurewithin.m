% [p, used] = pressurewithin (name, where, array, k, accuracy, quiet)
%
% Returns the pressure of an array from readarray, and how it was computed. accuracy is a tolerance, or from 1
% on the order of all integrals. where is a list of points, or the axes of a grid. Long work shows a progress bar, with name as its title,
% unless quiet is true. The identifiers of errors begin with name.

function [p, used] = pressurewithin (name, where, array, k, accuracy, quiet)

  checkwavelengths (name, array, k);
  [p, used] = longwork (name, quiet, where, librarypistons (array), k, accuracy);
  if (isreal (p))
    p = complex (p);                        % if all pressures are 0
  end

end

% Raises an error if a length cannot be told from 0 or is out of range.

function checkwavelengths (name, array, k)

  wavelengths = abs (real (k)) / (2 * pi);
  sides = abs ([array.l; array.s]) * wavelengths;
  sides = sides(sides ~= 0);
  if (any (sides < 1e-9) || any (sides > 1e6) || any (abs (array.positions(:)) * wavelengths > 1e9))
    error ([name, ':lengths'], ...
           ['Sides must be 0 or from 1e-9 to 1e6 wavelengths, and centres within 1e9 wavelengths of the ' ...
            'origin. Give lengths and 1/k in one unit.']);
  end

end
