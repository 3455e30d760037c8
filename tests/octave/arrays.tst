%!function p = wild () # values of which none is a number that an array may have everywhere
%!  p = {"a", "", {}, {1}, struct(), @sin, true, NaN, Inf, 0, -1, 1i, 1.5, 1e300, [], zeros(3, 0), ones(2, 2), single(1), sparse(1)};
%!endfunction
%!test # the calls of pistonlinear and others end with a result, or with an error of their own
%! pistons = struct ("widths", 1, "heights", 2, "centres", [0; 0; 0], "axes", eye (3), "weights", 1i);
%! calls = {{"linear", 4, 3, 1, 2}, {"matrix", [4, 2], [3, 4], 1, 2}, {"convex", 4, 3, 20, 1, 2}, ...
%!          {"apodization", "tukey", 4, 0.3}, {"steered", ones(3, 4), (1:4)', [0; 0; 1], 2}, ...
%!          {"focused", ones(3, 4), (1:4)' * 1i, [0; 0; 1], 2}, {"lensed", pistons, 3, 2, 0.1}, ...
%!          {"steereddelays", ones(3, 4), (1:4)', [0; 0; 1], 2}, {"focuseddelays", ones(3, 4), (1:4)', [0; 0; 1], 2}, ...
%!          {"burst", 1, 2, 20, "hann"}, {"gauss", 1, 0.5, 20}};
%! refused = 0;
%! for good = calls
%!   assert (! isempty (pistonfield_pressure (good{1}{:})));
%!   for n = 1:numel (good{1})
%!     for value = wild ()
%!       arguments = good{1};
%!       arguments(n) = value;
%!       try
%!         result = pistonfield_pressure (arguments{:});
%!       catch failure
%!         ++refused;
%!         assert (! isempty (strfind (failure.message, "Wrong arguments. Call pistongrid or pistonarray"))
%!                 || strcmp (failure.identifier, "pistonfield:field"), failure.message);
%!       end_try_catch
%!     endfor
%!     if (n < 4)
%!       fail ("pistonfield_pressure (good{1}{1:n-1})", "Wrong arguments");
%!     endif
%!   endfor
%!   fail ("pistonfield_pressure (good{1}{:}, 1)", "Wrong arguments");
%!   fail ("[a, b] = pistonfield_pressure (good{1}{:})", "Wrong arguments");
%! endfor
%! assert (refused > 400);
%!test # a focus so far away that a difference of distances would be lost is a direction
%! array = pistonlinear (64, 0.3e-3, 5e-3, 0.27e-3);
%! k = 2 * pi * 5e6 / 1540;
%! [~, far] = pistonarray ([0; 0; 0.03], setfield (array, "focus", [3; 0; 4] * 1e12), k, 3);
%! [~, steered] = pistonarray ([0; 0; 0.03], setfield (array, "steer", [3; 0; 4]), k, 3);
%! assert (far.weights, steered.weights, 1e-12);
%!test # k of either sign, and 0
%! array = setfield (pistonlinear (3, 1, 1, 1), "focus", [1, 0, 2]);
%! [~, ahead] = pistonarray ([0; 0; 1], array, 3);
%! [~, conjugate] = pistonarray ([0; 0; 1], array, -3);
%! assert (conjugate.weights, conj (ahead.weights));
%! [~, none] = pistonarray ([0; 0; 1], array, 0);
%! assert (none.weights, ones (3, 1));
