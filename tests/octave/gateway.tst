%!shared good, p0
%! good = {[0; 0; 0.01], 0, 0.01, 0.005, 4188.79, "cuda", 10};
%! p0 = pistonfield (good{:});

%!test # a sparse scalar is a number
%! for argument = [3, 4, 5, 7]
%!   arguments = good;
%!   arguments{argument} = sparse (good{argument});
%!   assert (pistonfield (arguments{:}), p0);
%!   full = sparse_ = good;
%!   full{argument} = 0;
%!   sparse_{argument} = sparse (0);
%!   assert (message_of (sparse_{:}), message_of (full{:}));
%! endfor

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

%!test # help
%! text = evalc ("help pistonfield");
%! for part = {"points      3 x N real double", "Errors", "Example", "CAUTION", "1e-18"}
%!   assert (! isempty (strfind (text, part{1})));
%! endfor
