%!shared points, pistons
%! points = [0, 1; 0, 2; 3, 4];
%! pistons = struct ("widths", [1; 2], "heights", [3; 4], "centres", [0, 5; 0, 0; 0, 0], ...
%!                   "axes", repmat (eye (3), [1, 1, 2]), "weights", [1; 2i]);
%!test # the calls of pistongrid and pistonarray
%! p = pistonfield_pressure (points, pistons, 2, 1e-6, []);
%! exact = pistonfield_quiet (points, 0, 3, 1, 2, "cuda", 40) ...
%!         + 2i * pistonfield_quiet (points - [5; 0; 0], 0, 4, 2, 2, "cuda", 40);
%! assert (p, exact, 3e-6);
%! [q, used] = pistonfield_pressure ({[0, 1], 2, [3; 4; 5]}, pistons, 2, 1e-6, []);
%! assert (size (q), [2, 1, 3]);
%! assert (q(2,1,2), p(2), 3e-6);
%! assert (fieldnames (used)', {"orders", "precision", "nodes", "bound"});
%!function shown = stopping_bar (part, seconds, shown) # fails in the third call
%!  global calls
%!  calls(end+1,:) = [part, seconds, shown];
%!  if (rows (calls) == 3)
%!    error ("three calls");
%!  endif
%!  shown = 7;
%!endfunction
%!test # the bar is called with the part that is done, the seconds, and what it returned before; its error ends the call
%! global calls
%! many = struct ("widths", ones (300, 1), "heights", ones (300, 1), "centres", rand (3, 300), ...
%!                "axes", repmat (eye (3), [1, 1, 300]), "weights", ones (300, 1));
%! where = 10 * rand (3, 1e6) + [0; 0; 2];
%! calls = zeros (0, 3);
%! fail ("p = pistonfield_pressure (where, many, 40, 1e-9, @stopping_bar)", "failed");
%! assert (rows (calls), 3);
%! assert (all (diff (calls(:,1)) > 0) && all (calls(:,1) > 0 & calls(:,1) < 1));
%! assert (calls(1,2) >= 0.5 && all (diff (calls(:,2)) >= 0.1));
%! assert (calls(:,3)', [0, 7, 7]);
%! for bar = {@(varargin) [], @(varargin) "text", @() 1, "nosuchfunction", 5}
%!   try
%!     p = pistonfield_pressure (where(:,1:3e4), many, 40, 1e-9, bar{1});
%!   catch failure
%!     assert (! isempty (strfind (failure.message, "failed")), failure.message);
%!   end_try_catch
%! endfor
%! assert (numel (pistonfield_pressure (points, pistons, 2, 1e-6, [])), 2);
%! clear -global calls
