% array = readpistons (array, others)
%
% Checks and completes an array argument: returns the sides, positions, rotations and weights of every piston,
% in columns (rotations: 3 x 3 x M), and steer or focus as a column. others are the names of further fields
% that it may have, which are not checked.

function array = readpistons (array, others)

  if (~ isstruct (array) || numel (array) ~= 1)
    fail ('must be a scalar struct.');
  end
  known = [{'l', 's', 'positions', 'rotations', 'weights'}, others, {'steer', 'focus'}];
  unknown = setdiff (fieldnames (array), known);
  if (~ isempty (unknown))
    fail ('has an unknown field: %s. The fields are %s and %s.', unknown{1}, ...
          strjoin (known(1:end-1), ', '), known{end});
  end
  for field = {'l', 's', 'positions'}
    if (~ isfield (array, field{1}))
      fail ('needs the field %s.', field{1});
    end
  end

  c = array.positions;
  if (~ isreals (c) || size (c, 1) ~= 3 || ndims (c) > 2 || isempty (c))
    fail ('.positions must be a finite real matrix with three rows and one column for each piston.');
  end
  array.positions = full (double (c));
  M = size (c, 2);

  array.l = oneeach (array.l, 'l', M);
  array.s = oneeach (array.s, 's', M);
  array.rotations = readrotations (array, M);
  array.weights = readweights (array, M);
  array = readaim (array);

end

function values = oneeach (values, name, M)

  if (~ isreals (values) || ~ any (numel (values) == [1, M]))
    fail ('.%s must be a finite real number, or one for each piston.', name);
  end
  values = repmat (full (double (values(:))), M / numel (values), 1);

end

function R = readrotations (array, M)

  R = eye (3);
  if (isfield (array, 'rotations'))
    R = array.rotations;
  end
  if (~ isreals (R) || size (R, 1) ~= 3 || size (R, 2) ~= 3 || ~ any (size (R, 3) == [1, M]) ...
      || ndims (R) > 3)
    fail ('.rotations must be 3 x 3, or 3 x 3 x M for M pistons.');
  end
  R = full (double (R));
  for m = 1:size (R, 3)
    if (~ (norm (R(:,:,m)' * R(:,:,m) - eye (3)) < 1e-6) || det (R(:,:,m)) < 0)
      fail ('.rotations(:,:,%d) must be a rotation matrix.', m);
    end
  end
  R = repmat (R, [1, 1, M / size(R, 3)]);

end

function weights = readweights (array, M)

  weights = ones (M, 1);
  if (isfield (array, 'weights'))
    weights = array.weights;
    if (~ isnumeric (weights) || numel (weights) ~= M || ~ all (isfinite (weights(:))))
      fail ('.weights must be one finite number for each piston.');
    end
    weights = full (double (weights(:)));
  end

end

function array = readaim (array)

  if (isfield (array, 'steer') && isfield (array, 'focus'))
    fail ('must not have both steer and focus: remove one of them.');
  end
  if (isfield (array, 'steer'))
    array.steer = readpoint (array.steer, 'steer');
    if (~ any (array.steer))
      fail ('.steer must be a nonzero vector.');
    end
  elseif (isfield (array, 'focus'))
    array.focus = readpoint (array.focus, 'focus');
  end

end

function point = readpoint (values, name)

  if (~ isreals (values) || numel (values) ~= 3)
    fail ('.%s must be three finite real numbers.', name);
  end
  point = full (double (values(:)));

end

function answer = isreals (values)

  answer = isnumeric (values) && isreal (values) && all (isfinite (values(:)));

end

function fail (text, varargin)

  blank = ' ';
  if (text(1) == '.')
    blank = '';
  end
  error ('pistonarray:array', ['array', blank, text], varargin{:});

end
