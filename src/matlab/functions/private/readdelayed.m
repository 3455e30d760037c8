% array = readdelayed (name, array, speed)
%
% Checks and completes an array that moves in a pulse, as readpistons does: real weights, and the delay of every
% piston in a column, including those of steer and focus for this speed of sound. The identifiers of errors of
% the library begin with name.

function array = readdelayed (name, array, speed)

  array = readpistons (array, {'delays'});
  M = size (array.positions, 2);
  if (~ isreal (array.weights))
    error ('pistonarray:array', ...
           'array.weights must be real: in a pulse, pistons differ by array.delays, not in phase.');
  end
  if (~ isfield (array, 'delays'))
    array.delays = zeros (M, 1);
  end
  delays = array.delays;
  if (~ isnumeric (delays) || ~ isreal (delays) || numel (delays) ~= M || ~ all (isfinite (delays(:))))
    error ('pistonarray:array', 'array.delays must be one finite real number for each piston.');
  end
  array.delays = full (double (delays(:)));
  if (isfield (array, 'steer'))
    array.delays = fromlibrary (name, 'steereddelays', array.positions, array.delays, array.steer, speed);
  elseif (isfield (array, 'focus'))
    array.delays = fromlibrary (name, 'focuseddelays', array.positions, array.delays, array.focus, speed);
  end

end
