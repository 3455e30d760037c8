% [points, l, s] = random_field ("list", number, count)
% [axes_, l, s] = random_field ("grid", number, count)
% [points, array] = random_field ("array", number, count)
%
% Returns a random field of about count points for pistonfield, pistongrid or pistonarray. number seeds the
% generator. Lengths are in wavelengths.

function [where, varargout] = random_field (kind, number, count)

  rand ("twister", number);
  randn ("twister", number);
  varargout = cell (1, 2);
  switch (kind)
    case "list"
      [where, varargout{:}] = some_list (count);
    case "grid"
      [varargout{:}] = some_sides ();
      where = some_grid (varargout{:}, count);
    case "array"
      [where, varargout{1}] = some_array (count);
  endswitch

endfunction

function [l, s] = some_sides () # 0.2 to 60; in a third of the cases about equal

  l = 0.2 * 300 ^ rand ();
  s = 0.2 * 300 ^ rand ();
  if (rand () < 0.3)
    s = min (max (l * (0.5 + rand ()), 0.2), 60);
  endif

endfunction

function values = some_axis (centre, width, count)

  values = linspace (centre - width / 2, centre + width / 2, count);

endfunction

# Distances that start at the piston's face or somewhere in front of it.
function values = some_depths (longest, count)

  nearest = 10 ^ (3 * rand () - 2) * (rand () > 0.3);
  values = linspace (nearest, nearest + longest * 10 ^ (2 * rand () - 0.7), count);

endfunction

function axes_ = some_grid (l, s, count)

  width = max (l, s) * (0.3 + 3 * rand ());
  aside = width * (rand () - 0.5) * (rand () < 0.5);
  n = max (2, round (sqrt (count) * 2 ^ (2 * rand () - 1)));
  m = max (2, round (count / n));
  switch (ceil (4 * rand ()))
    case 1
      axes_ = {some_axis(aside, width, n), l * (rand () - 0.5) * (rand () < 0.5), some_depths(max (l, s), m)};
    case 2
      axes_ = {s * (rand () - 0.5) * (rand () < 0.5), some_axis(aside, width, n), some_depths(max (l, s), m)};
    case 3
      axes_ = {some_axis(aside, width, n), some_axis(0, width, m), some_depths(max (l, s), 2)(1 + (rand () < 0.3))};
    case 4
      n = max (2, round (count ^ (1 / 3)));
      axes_ = {some_axis(aside, width, n + 3), some_axis(0, width * 2 ^ (2 * rand () - 1), n), some_depths(max (l, s), n)};
  endswitch

endfunction

function points = listed (axes_)

  [X, Y, Z] = ndgrid (axes_{:});
  points = [X(:)'; Y(:)'; Z(:)'];

endfunction

# Grids, clouds, rotated planes with their points in random order, and points as seen from an element of
# an array.
function [points, l, s] = some_list (count)

  [l, s] = some_sides ();
  points = listed (some_grid (l, s, count));
  N = columns (points);
  low = min (points, [], 2);
  high = max (points, [], 2);
  switch (ceil (4 * rand ()))
    case 1
      points = low + (high - low) .* rand (3, N) .^ [1; 1; 1 + 2 * (rand () < 0.3)];
    case 2
      [turned, ~] = qr (randn (3));
      points = turned * points + [0; 0; max(l, s) * rand()];
      [~, order] = sort (rand (1, N));
      points = points(:,order);
    case 3
      elements = ceil (128 * rand ());
      step = s * (1.05 + rand ());
      if (high(1) > low(1))
        points(1,:) *= elements * step / (high(1) - low(1));
      endif
      points(1,:) -= (ceil (elements * rand ()) - (elements + 1) / 2) * step;
  endswitch

endfunction

# Rows, matrices and bowls, with elements of one size or several, steered, focused and weighted.
function [points, array] = some_array (count)

  M = round (128 ^ rand ());
  array.l = 0.2 * 150 ^ rand ();
  array.s = 0.2 * 50 ^ rand ();
  row = ((1:M) - (M + 1) / 2) * array.s * (1.05 + rand ());
  width = max (row(end) - row(1) + array.s, array.l);
  array.positions = [row; zeros(2, M)];
  switch (ceil (4 * rand ()))
    case 1
      n = floor (sqrt (M));
      [X, Y] = ndgrid (row(1:n) - mean (row(1:n)), ((1:n) - (n + 1) / 2) * array.l * (1.05 + rand ()));
      array.positions = [X(:)'; Y(:)'; zeros(1, n ^ 2)];
      width = max ([range(X(:)) + array.s, range(Y(:)) + array.l]);
    case 2
      radius = width * (0.6 + rand ());
      for m = 1:M
        c = cos (row(m) / radius);
        t = sin (row(m) / radius);
        array.rotations(:,:,m) = [c, 0, -t; 0, 1, 0; t, 0, c];
        array.positions(:,m) = radius * [t; 0; 1 - c];
      endfor
    case 3
      array.l *= 0.5 + rand (1, M);
  endswitch
  M = columns (array.positions);
  switch (ceil (5 * rand ()))
    case 1, array.steer = [rand() - 0.5, 0, 1];
    case 2, array.focus = width * [rand() - 0.5, 0, 0.2 + 2 * rand()];
    case 3, array.weights = exp (2i * pi * rand (1, M));
    case 4, array.weights = randn (1, M);
  endswitch

  wide = width * (0.3 + 2 * rand ());
  n = round (sqrt (count));
  across = some_axis (0, wide, n);
  switch (ceil (3 * rand ()))
    case 1
      points = listed ({across, 0, some_depths(width, n)});
    case 2
      points = listed ({across, across, some_depths(width, 2)(1)});
    case 3
      depths = some_depths (width, 2);
      points = [wide; 2 * max(array.l); diff(depths)] .* rand (3, n ^ 2) + [-wide / 2; -max(array.l); depths(1)];
  endswitch

endfunction
