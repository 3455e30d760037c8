% array = flatarray (name, counts, pitches, l, s)
%
% Returns the array that pistonmatrix describes. Checks l and s only; the identifiers of its errors
% begin with name.

function array = flatarray (name, counts, pitches, l, s)

  l = readlength (name, 'l', l);
  s = readlength (name, 's', s);
  checkgap (name, 'l', l, counts(2), pitches(2));
  checkgap (name, 's', s, counts(1), pitches(1));
  [X, Y] = ndgrid (centred (counts(1)) * pitches(1), centred (counts(2)) * pitches(2));
  array = struct ('l', l, 's', s, 'positions', [X(:), Y(:), zeros(numel (X), 1)].');
  checklengths (name, [l, s], array.positions);

end

% Raises an error if neighbours overlap by more than rounding, also that of single precision.

function checkgap (name, argument, side, count, pitch)

  if (count > 1 && side > pitch * (1 + 1e-6))
    error ([name, ':', argument], ...
           '%s must be at most the pitch in its direction: elements must not overlap.', argument);
  end

end

function values = centred (count)

  values = (1:count) - (count + 1) / 2;

end
