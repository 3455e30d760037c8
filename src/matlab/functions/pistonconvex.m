% PISTONCONVEX  Curved array of equal pistons, convex or concave.
%
%   array = pistonconvex (count, pitch, radius, l, s)
%
% Returns the struct that pistonarray takes: elements on an arc in the plane y = 0, each
% turned outward.  The apex of the arc, the middle of the array, is the origin, and the
% centre of curvature is [0; 0; -radius].  With the angle
%
%   a(n) = (n - (count + 1) / 2) * pitch / radius
%
% element n has the centre radius * [sin(a); 0; cos(a) - 1], and radiates in the direction
% [sin(a); 0; cos(a)].
%
% A negative radius gives a concave array: it curves forward, and all elements face the
% centre of curvature, which is then in front of the array.
%
% Add weights, steer or focus as fields: see pistonarray.  It neglects shadowing: points
% next to a convex array are behind the planes of its outer elements, whose pressures there
% are those at the mirror images of the points.
%
% Arguments (all lengths in one unit)
%
%   count       number of elements, 1 to 1e6.
%   pitch       distance between the centres of neighbours along the arc, positive.
%   radius      of the arc through the elements' centres; negative: concave.  The
%               elements must fit on the circle: count * pitch <= 2 pi abs (radius).
%   l, s        sides of an element along y and along the arc, positive; s at most pitch.
%
% Result
%
%   array       struct with the fields l, s, positions (3 x count) and rotations
%               (3 x 3 x count).
%
% Example: 96 elements at 3 MHz in tissue on a radius of 50 mm, focused to the side
%
%   array = pistonconvex (96, 0.48e-3, 50e-3, 12e-3, 0.43e-3);    % m
%   array.weights = pistonapodization ('tukey', 96);
%   array.focus = [10e-3; 0; 60e-3];
%   x = (-100:100) * 0.3e-3;
%   z = (0:200) * 0.5e-3 + 10e-3;
%   p = pistonarray ({x, 0, z}, array, 2 * pi * 3e6 / 1540);
%   pistonplot (x, 0, z, p, 'dB');
%
% Errors: "count must be an integer from 1 to 1e6."; "pitch must be a finite real number." or
% "... must be positive.", the same for l and s; "radius must be a finite real number." or "...
% must be at least count * pitch / (2 pi) in magnitude: ..."; "s must be at most the pitch in its
% direction: elements must not overlap."; "Sides must be from 1e-18 to 1e18 ..."
%
% See also: pistonarray, pistonlinear, pistonmatrix, pistonapodization, pistonlens.

function array = pistonconvex (count, pitch, radius, l, s)

  if (nargin < 5)
    error ('pistonconvex:arguments', ...
           'Too few arguments. Call it as array = pistonconvex (count, pitch, radius, l, s).');
  end
  array = fromlibrary ('pistonconvex', 'convex', count, pitch, radius, s, l);
  checklengths ('pistonconvex', [array.l, array.s], array.positions);

end

%!test # the centres are on the circle, one pitch apart along the arc, with the apex at the origin
%! for radius = [50, -50]
%!   for count = [1, 2, 95, 96]
%!     array = pistonconvex (count, 0.5, radius, 12, 0.4);
%!     assert (size (array.positions), [3, count]);
%!     assert (array.positions(2,:), zeros (1, count));
%!     fromcentre = array.positions - [0; 0; -radius];
%!     assert (sqrt (sum (fromcentre .^ 2)), 50 * ones (1, count), 1e-13);
%!     angles = atan2 (fromcentre(1,:), abs (fromcentre(3,:)));
%!     assert (50 * angles, ((1:count) - (count + 1) / 2) * 0.5, 1e-12);
%!     assert (radius * array.positions(3,:) <= 0);      # convex arrays curve back, concave ones forward
%!     assert (array.positions(1,:), -fliplr (array.positions(1,:)));
%!     assert (array.positions(3,:), fliplr (array.positions(3,:)));
%!   endfor
%! endfor
%! assert (pistonconvex (3, 0.5, 50, 12, 0.4).positions(:,2), [0; 0; 0]);
%!test # each element's own z is the normal of the circle, and own y is y; right-handed
%! for radius = [50, -50]
%!   array = pistonconvex (96, 0.5, radius, 12, 0.4);
%!   outward = (array.positions - [0; 0; -radius]) / radius;
%!   for m = 1:96
%!     R = array.rotations(:,:,m);
%!     assert (R(:,3), outward(:,m), 1e-14);
%!     assert (R(:,2), [0; 1; 0]);
%!     assert (R(:,1), cross (R(:,2), R(:,3)), 1e-15);
%!   endfor
%! endfor
%!test # neighbours without kerf do not overlap
%! array = pistonconvex (12, 1, 12 / (2 * pi), 1, 1);      # a whole circle
%! for m = 1:12
%!   right = array.positions(:,m) + array.rotations(:,1,m) / 2;
%!   next = mod (m, 12) + 1;
%!   assert (dot (right - array.positions(:,next), array.rotations(:,1,next)) <= -1 / 2);
%! endfor
%!test # a circle that is full but for rounding
%! for count = 3:60
%!   pistonconvex (count, 1, single (count / (2 * pi)), 1, 1);
%! endfor
%!test # behind the plane of an element, its pressure is that of the mirror image
%! array = pistonconvex (40, 0.5, 15, 4, 0.5);
%! array.weights = [zeros(1, 39), 1];
%! normal = array.rotations(:,3,40);
%! points = [0, -2, 1; 0, 1, -3; 0.5, 1, 1.5];
%! depth = normal' * (points - array.positions(:,40));
%! assert (all (depth < 0));
%! p = pistonarray (points - 2 * normal * depth, array, 2 * pi, 40);
%! assert (max (abs (pistonarray (points, array, 2 * pi, 40) - p)) < 1e-5 * max (abs (p)));
%!test # a huge radius gives the linear array
%! array = pistonconvex (16, 1, 1e12, 5, 0.9);
%! assert (array.positions, pistonlinear (16, 1, 5, 0.9).positions, 1e-9);
%! assert (array.rotations, repmat (eye (3), [1, 1, 16]), 1e-10);
%!test # every element of a concave array has the centre of curvature on its axis
%! k = 2 * pi;
%! array = pistonconvex (40, 0.6, -25, 8, 0.5);
%! p = pistonarray ([0; 0; 25], array, k, 60);
%! assert (abs (p - 40 * pistonfield_quiet ([0; 0; 25], 0, 8, 0.5, k, "cuda", 60)) < 1e-5 * abs (p));
%!test # turning the points by one pitch about the centre of curvature exchanges the elements
%! k = 2 * pi;
%! radius = 20;
%! array = pistonconvex (31, 0.6, radius, 8, 0.5);
%! points = [-9, -1.3, 0.1, 2.3, 6; 0, 2, -1, 1.4, 5; 5, 8, 20, 10, 60];
%! a = 0.6 / radius;
%! turn = [cos(a), 0, sin(a); 0, 1, 0; -sin(a), 0, cos(a)];
%! turned = turn * (points + [0; 0; radius]) - [0; 0; radius];
%! array.weights = [1:30, 0] / 30;
%! p = pistonarray (points, array, k, 60);
%! array.weights = [0, 1:30] / 30;
%! assert (max (abs (pistonarray (turned, array, k, 60) - p)) < 1e-5 * max (abs (p)));
%!test # focused, it is loudest near the focus
%! array = pistonconvex (96, 0.5, 60, 10, 0.45);
%! array.focus = [8; 0; 50];
%! array.weights = pistonapodization ("hann", 96);
%! offset = -8:0.1:8;
%! away = [8; 0; 110] / norm ([8; 0; 110]);               # from the centre of curvature
%! along = array.focus + away * (-25:0.5:25);
%! across = array.focus + [away(3); 0; -away(1)] * offset;
%! p = abs (pistonarray (across, array, 2 * pi, 60));
%! [~, loudest] = max (p);
%! assert (abs (offset(loudest)) <= 0.3);
%! assert (max (p(abs (offset) > 4)) < 0.2 * max (p));
%! p = abs (pistonarray (along, array, 2 * pi, 60));
%! [~, loudest] = max (p);
%! assert (norm (along(:,loudest) - array.focus) < 8);
%!error <Call it as array = pistonconvex> pistonconvex (4, 1, 10, 1)
%!error <count must be an integer from 1> pistonconvex ([4, 4], 1, 10, 1, 1)
%!error <pitch must be positive> pistonconvex (4, -1, 10, 1, 1)
%!error <radius must be a finite real number> pistonconvex (4, 1, Inf, 1, 1)
%!error <radius must be a finite real number> pistonconvex (4, 1, "10", 1, 1)
%!error <radius must be at least count \* pitch> pistonconvex (4, 1, 0, 1, 1)
%!error <the elements must fit on the circle> pistonconvex (63, 1, 10, 1, 1)
%!error <the elements must fit on the circle> pistonconvex (63, 1, -10, 1, 1)
%!error <l must be positive> pistonconvex (62, 1, 10, 0, 1)
%!error <s must be at most the pitch> pistonconvex (4, 1, 10, 1, 1.1)
%!error id=pistonconvex:s pistonconvex (4, 1, 10, 1, 1.1)
%!error <Sides must be from 1e-18> pistonconvex (4, 1, 10, 1e19, 1)
%!demo
%! array = pistonconvex (96, 0.48e-3, 50e-3, 12e-3, 0.43e-3);    % m
%! array.weights = pistonapodization ('tukey', 96);
%! array.focus = [10e-3; 0; 60e-3];
%! x = (-100:100) * 0.3e-3;
%! z = (0:200) * 0.5e-3 + 10e-3;
%! p = pistonarray ({x, 0, z}, array, 2 * pi * 3e6 / 1540);
%! pistonplot (x, 0, z, p, 'dB');
