%!test # the largest and the smallest lengths
%! rand ("twister", 1);
%! for run = 1:10
%!   sides = 10 .^ (-4 * rand (1, 2));
%!   points = (2 * rand (3, 200) - 1) .* 10 .^ (-4 * rand (3, 200));
%!   points(3,:) = abs (points(3,:));
%!   call = @(points, unit) pistonfield_quiet (points * unit, 0, sides(1) * unit, sides(2) * unit, ...
%!                                             5 / max (sides) / unit, "cuda", 64);
%!   expected = call (points, 1e8);     # far above the distances that count as zero
%!   assert (call (points, 1e18), expected, 2e-4 * max (abs (expected)));
%!   sides = max (sides / max (sides), 0.01);
%!   points(1:2,:) = 0;
%!   points(3,:) = max (points(3,:), 0.01);
%!   expected = call (points, 1);
%!   assert (call (points, 1e-16), expected, 2e-4 * max (abs (expected)));
%! endfor

%!function bound = bound_of (points, l, s, k) # on single-precision errors, with the distance to the farthest corner
%!  R = sqrt ((abs (points(1,:)) + s / 2) .^ 2 + (abs (points(2,:)) + l / 2) .^ 2 + points(3,:) .^ 2)';
%!  bound = 3 * 2 ^ -24 * (1 + k * R);
%!endfunction

%!test # far away the field is the product of two sincs
%! # R = r - u * q + O(q^2 / r) for the point q of the piston in the direction u. The neglected terms: h being half
%! # the diagonal, R - (r - u * q) is at most h^2 / (2 (r - h)), and 1/R differs from 1/r by at most h / (r (r - h)).
%! rand ("twister", 2);
%! for run = 1:10
%!   [l, s, k] = num2cell (double (single ([0.8, 0.8, 9] + [0.2, 0.2, 2] .* rand (1, 3)))){:};
%!   u = 1.8 * rand (2, 200) - 0.9;
%!   u = u(:,sumsq (u) < 0.9);
%!   points = double (single (120 * [u; sqrt(1 - sumsq (u))]));
%!   r = norm (points, "columns")';
%!   pattern = sinc (k * s / (2 * pi) * points(1,:)' ./ r) .* sinc (k * l / (2 * pi) * points(2,:)' ./ r);
%!   amplitude = k * s * l ./ (2 * pi * r);
%!   h = hypot (s, l) / 2;
%!   bound = amplitude .* (k * h ^ 2 / 2 + h) ./ (r - h) + bound_of (points, l, s, k);
%!   p = pistonfield_quiet (points, 0, l, s, k, "cuda", 64);
%!   assert (all (abs (p - amplitude .* pattern .* exp (-1i * k * r)) <= bound));
%!   assert (sum (bound < 0.5 * amplitude .* abs (pattern)) > 50 && any (bound < -0.5 * amplitude .* pattern));
%! endfor

%!test # the fields of the parts of a piston that is cut in two add up to its own
%! rand ("twister", 3);
%! for run = 1:100
%!   sides = randi ([32, 128], 1, 2) / 64;   # multiples of 1/64, so that sums and halves are exact in single precision
%!   k = double (single (1 + 14 * rand ()));
%!   points = [randi([-192, 192], 2, 20); randi([32, 256], 1, 20)] / 64;
%!   for axis_ = 1:2
%!     along = [2, 1] == axis_;   # l lies along y
%!     first = randi ([8, 24]) / 64;
%!     rest = sides(along) - first;
%!     sum_ = bound = 0;
%!     for part = {[sides(along), 0, -1], [first, -rest / 2, 1], [rest, first / 2, 1]}
%!       [side, centre, sign_] = num2cell (part{1}){:};
%!       seen = points;
%!       seen(axis_,:) -= centre;
%!       own = num2cell (merge (along, side, sides));
%!       sum_ += sign_ * pistonfield_quiet (seen, 0, own{:}, k, "cuda", 64);
%!       bound += bound_of (seen, own{:}, k);
%!     endfor
%!     assert (all (abs (sum_) <= bound));
%!   endfor
%! endfor

%!test # help
%! text = evalc ("help pistonfield");
%! for part = {"points      3 x N real double", "Errors", "Example", "CAUTION", "1e-18"}
%!   assert (! isempty (strfind (text, part{1})));
%! endfor
