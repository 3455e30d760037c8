% [worst, against] = tolerance_sweep (kind, cases, count)
%
% Returns the largest ratios of an error to the tolerances 1e-2, 1e-4 and 1e-6 of pistongrid (if kind is "grid")
% or pistonarray ("array") in the given cases of random_field, with about count points each. Errors are
% relative to the peak pressure. They are differences from order 512, which shares no code with the evaluation
% for a tolerance, where its own error is below a third of the tolerance: if no point is behind a piston, and if
% the bound of its rounding error is. Otherwise they are differences from the pressure for a tolerance of 1e-9.
% against is how often each tolerance was compared with order 512.

function [worst, against] = tolerance_sweep (kind, cases, count)

  tolerances = [1e-2, 1e-4, 1e-6];
  worst = against = zeros (1, 3);
  for number = cases
    switch (kind)
      case "grid"
        [axes_, l, s] = random_field ("grid", number, count);
        array = struct ("l", l, "s", s, "positions", [0; 0; 0]);
        [X, Y, Z] = ndgrid (axes_{:});
        points = [X(:)'; Y(:)'; Z(:)'];
        pressure = @(varargin) pistongrid (axes_{:}, l, s, 2 * pi, varargin{:}, "quiet")(:);
      case "array"
        [points, array] = random_field ("array", number, count);
        pressure = @(varargin) pistonarray (points, array, 2 * pi, varargin{:}, "quiet");
    endswitch
    fine = pressure ("tolerance", 1e-9);
    best = pressure (512);
    peak = max (abs (fine));
    for n = 1:3
      reference = fine;
      if (error_of_512 (points, array) < tolerances(n) * peak / 3)
        reference = best;
        ++against(n);
      endif
      ratio = max (abs (pressure ("tolerance", tolerances(n)) - reference)) / peak / tolerances(n);
      if (ratio > 1)
        printf ("%s %d: %.3g times the tolerance %g\n", kind, number, ratio, tolerances(n));
      endif
      worst(n) = max (worst(n), ratio);
    endfor
  endfor

endfunction

% The bound of docs/accuracy.md on the rounding error of order 512, and that of converting coordinates and
% wave number.
function bound = error_of_512 (points, array)

  bound = 0;
  weights = ones (1, columns (array.positions));
  if (isfield (array, "weights"))
    weights = abs (array.weights);
  endif
  for m = 1:columns (array.positions)
    d = points - array.positions(:,m);
    normal = [0; 0; 1];
    if (isfield (array, "rotations"))
      normal = array.rotations(:,3,m);
    endif
    if (any (normal' * d < 0))
      bound = Inf;
      return
    endif
    R = sqrt (max (sum (d .^ 2, 1))) + norm ([max(array.l), max(array.s)]) / 2;
    bound += weights(m) * (7.5 + 2) * 2^-24 * (1 + 2 * pi * R);
  endfor

endfunction
