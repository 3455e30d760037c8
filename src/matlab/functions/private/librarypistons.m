% pistons = librarypistons (array)
%
% Returns the pistons of an array from readarray or readdelayed in the form that pistonfield_pressure takes. A
% negative side reverses the sign of the weight, as in pistonfield.

function pistons = librarypistons (array)

  pistons = struct ('widths', abs (array.s), 'heights', abs (array.l), 'centres', array.positions, ...
                    'axes', array.rotations, 'weights', array.weights .* sign (array.l) .* sign (array.s));
  if (isfield (array, 'delays'))
    pistons.delays = array.delays;
  end

end
