% array = readarray (array, k)
%
% Checks and completes the array argument of pistonarray, as readpistons does. The weights include the phases
% of steer and focus.

function array = readarray (array, k)

  array = readpistons (array, {});
  if (isfield (array, 'steer'))
    array.weights = fromlibrary ('pistonarray', 'steered', array.positions, array.weights, array.steer, k);
  elseif (isfield (array, 'focus'))
    array.weights = fromlibrary ('pistonarray', 'focused', array.positions, array.weights, array.focus, k);
  end

end
