% PISTONARRAY  Pressure of an array of rectangular pistons.
%
%   p = pistonarray (points, array, k)
%   p = pistonarray (points, array, k, nabscissas)
%   p = pistonarray (..., 'quiet')
%   [p, weights, order] = pistonarray (...)
%
% Adds the fields of M pistons, each moved, rotated and weighted:
%
%   p(n) = sum over m of weights(m) * f_m (R_m' * (points(:,n) - c_m))
%
% Here f_m is the pressure that pistonfield gives for the sides of piston m, c_m its
% centre and R_m its rotation.  Each piston lies in its own rigid plane.  For pistons
% that are turned towards each other, the sum neglects shadowing and scattering.
%
% Arguments (all lengths, and 1/k, in one unit)
%
%   points      3 x N real double, one point per column.
%   array       a struct; l, s and positions are required:
%     l, s        sides along the piston's own y and along its own x: one number for all
%                 pistons, or one for each.
%     positions   3 x M, the centres.
%     rotations   3 x 3, or 3 x 3 x M: the columns are the directions of the piston's own
%                 x, y and z.  Default: no rotation.
%     weights     M complex numbers, the velocity of each piston.  Default: 1.
%     steer       3 numbers, a direction, for example [sind(a); 0; cosd(a)]: sets the
%                 phases of the weights to send a plane wave in this direction.
%     focus       3 numbers, a point: sets the phases of the weights so that the waves
%                 from the pistons' centres arrive there in phase.  Not with steer.
%   k           wave number, 2 pi / wavelength.
%   nabscissas  order of the quadrature rule, 1 to 512, or a table made by pistonrule.
%               If it is omitted or [], pistonarray chooses one order for all pistons,
%               with an error of p below 1e-4 of the peak of p.
%   'quiet'     suppresses the progress bar, which appears if the work takes more than
%               half a second.
%
% Result
%
%   p           N x 1 complex double, as from pistonfield.
%   weights     M x 1 complex double, including the phases of steering and focusing.
%   order       the chosen order, or nabscissas.
%
% How the order is chosen: pistonarray compares the sums of lower orders with those of an
% order at least four times as high (384 with 512, the highest).  It compares all of up to
% 1000 points.  Of a longer list it compares some 700 points, with a safety margin: those
% where an edge of a piston needs the highest orders, those nearest to a piston, and
% others.  The peak is that of the sum at these points: if pistons cancel each other, the
% order is higher than each of them needs.  This is no proof, but of 1000 random arrays
% none had an error above 1e-4 of its peak at any point.  The search takes as long as some
% ten thousand points: in a loop over short lists, pass the order that the first call
% returned.
%
% Points are evaluated in pieces; Ctrl-C ends the work.
%
% Example: 64 elements at 1 MHz in water, focused 60 mm ahead and 20 mm to the side
%
%   lambda = 1500 / 1e6;                      % m
%   array.l = 15 * lambda;
%   array.s = 0.4 * lambda;
%   array.positions = [((1:64) - 32.5) * lambda / 2; zeros(2, 64)];
%   array.focus = [20e-3; 0; 60e-3];
%   x = (-200:200) * 0.2e-3;
%   z = (5:400) * 0.2e-3;
%   [X, Z] = ndgrid (x, z);
%   p = pistonarray ([X(:)'; zeros(1, numel (X)); Z(:)'], array, 2 * pi / lambda);
%   pistonplot (x, 0, z, p, 'dB');
%
% Errors: "points must be a full real double matrix ..."; "array ...", with the field and its
% requirement; "k must be a finite real number."; "nabscissas must be an order from 1 to 512,
% ..."; "Sides must be from 1e-18 to 1e18 ..."; "No order up to 384 keeps the error below 1e-4
% ..." (behind a piston, next to the edges of very long sides, and where pistons cancel each
% other almost completely); and pistonfield's errors of the device and of memory.
%
% See also: pistonfield, pistongrid, pistonplot, pistonorder.

function [p, weights, nabscissas] = pistonarray (points, array, k, varargin)

  if (nargin < 3)
    error ('pistonarray:arguments', 'Too few arguments. Call it as p = pistonarray (points, array, k).');
  end
  checkpoints ('pistonarray', points);
  k = readnumber ('pistonarray', 'k', k);
  [nabscissas, quiet] = readoptions ('pistonarray', varargin);
  array = readarray (array, k);
  checklengths ('pistonarray', [array.l; array.s], [points, array.positions]);
  weights = array.weights;
  if (isempty (nabscissas))
    nabscissas = defaultorder ('pistonarray', points, array, k);
  end
  p = arraypressure (points, array, k, nabscissas, 'pistonarray', quiet);

end

%!shared points, lambda, k, one
%! lambda = 1.5e-3;
%! k = 2 * pi / lambda;
%! points = [-6e-3, 0, 1e-3, 4e-3; 0, 2e-3, -3e-3, 1e-3; 5e-3, 1e-3, 20e-3, 60e-3];
%! one = struct ("l", 6e-3, "s", 4e-3, "positions", [0; 0; 0]);
%!test # one piston at the origin gives the values of pistonfield
%! p = pistonfield_quiet (points, 0, 6e-3, 4e-3, k, "cuda", 30);
%! assert (pistonarray (points, one, k, 30), p);
%!test # two halves add up to the whole
%! halves = struct ("l", 6e-3, "s", 2e-3, "positions", [-1e-3, 1e-3; 0, 0; 0, 0]);
%! p = pistonarray (points, one, k, 60);
%! assert (max (abs (pistonarray (points, halves, k, 60) - p)) < 2e-6);
%!test # a quarter turn about z exchanges the sides
%! turned = one;
%! turned.rotations = [0, -1, 0; 1, 0, 0; 0, 0, 1];
%! p = pistonfield_quiet (points, 0, 4e-3, 6e-3, k, "cuda", 30);
%! assert (max (abs (pistonarray (points, turned, k, 30) - p)) < 2e-6);
%!test # moving and rotating piston and points together changes nothing
%! c = cosd (20);  s = sind (20);
%! R = [c, 0, s; 0, 1, 0; -s, 0, c] * [1, 0, 0; 0, c, -s; 0, s, c];
%! moved = one;
%! moved.positions = [3e-3; -1e-3; 7e-3];
%! moved.rotations = R;
%! p = pistonarray (points, one, k, 30);
%! assert (max (abs (pistonarray (R * points + moved.positions, moved, k, 30) - p)) < 1e-5);
%!test # different weights and different sides
%! several = struct ("l", [6e-3, 3e-3, 6e-3], "s", [4e-3, 4e-3, 4e-3], ...
%!                   "positions", [0, 8e-3, -5e-3; 0, 0, 1e-3; 0, 0, 0], "weights", [1, 2i, -0.5]);
%! p = pistonfield_quiet (points, 0, 6e-3, 4e-3, k) ...
%!     + 2i * pistonfield_quiet (points - [8e-3; 0; 0], 0, 3e-3, 4e-3, k) ...
%!     - 0.5 * pistonfield_quiet (points - [-5e-3; 1e-3; 0], 0, 6e-3, 4e-3, k);
%! assert (max (abs (pistonarray (points, several, k, 10) - p)) < 1e-12);
%!test # the default order keeps the error below 1e-4 of the sum's peak, and is returned
%! tall = struct ("l", 5e-3, "s", 0.25e-3, "positions", [((1:32) - 16.5) * 0.3e-3; zeros(2, 32)]);
%! [X, Z] = ndgrid ((-60:60) * 0.1e-3, (1:60) * 0.2e-3);
%! plane = [X(:)'; zeros(1, numel (X)); Z(:)'];
%! errorof = @(q, best) max (abs (q - best)) / max (abs (best));
%! for weights = {ones(1, 32), (-1) .^ (1:32)}          # alternating weights nearly cancel
%!   tall.weights = weights{1};
%!   [p, w, order] = pistonarray (plane, tall, 2 * pi * 5e6 / 1500);
%!   best = pistonarray (plane, tall, 2 * pi * 5e6 / 1500, 512);
%!   assert (errorof (p, best) < 1e-4);
%!   assert (errorof (pistonarray (plane, tall, 2 * pi * 5e6 / 1500, order - 4), best) > 1e-4);
%!   [q, w, again] = pistonarray (plane, tall, 2 * pi * 5e6 / 1500, [], "quiet");
%!   assert ({q, again}, {p, order});
%! endfor
%!test # a given order is used unchanged, and returned
%! [p, w, order] = pistonarray (points, one, k, 3);
%! assert (p, pistonfield_quiet (points, 0, 6e-3, 4e-3, k, "cuda", 3));
%! assert (order, 3);
%!test # a piston with weight 0
%! [p, w, order] = pistonarray (points, setfield (one, "weights", 0), k);
%! assert ({p, order}, {complex(zeros(4, 1)), 1});
%!error <No order up to 384 keeps the error below 1e-4> pistonarray ([0; 3e-3 + 1e-9; -0.01], one, k)
%!test # waves arrive together at the focus
%! row = struct ("l", 6e-3, "s", 0.4e-3, "positions", [((1:16) - 8.5) * 0.75e-3; zeros(2, 16)], ...
%!               "focus", [3e-3; 0; 40e-3]);
%! [p, w] = pistonarray (row.focus, row, k, 30);
%! each = zeros (16, 1);
%! for m = 1:16
%!   each(m) = w(m) * pistonfield_quiet (row.focus - row.positions(:,m), 0, 6e-3, 0.4e-3, k, "cuda", 30);
%! endfor
%! assert (abs (w), ones (16, 1), 1e-15);
%! assert (max (abs (arg (each / each(1)))) < 0.02);
%! assert (abs (p) > 0.999 * sum (abs (each)));
%!test # a steered array is loudest in the direction of steer
%! row = struct ("l", 6e-3, "s", 0.4e-3, "positions", [((1:32) - 16.5) * 0.75e-3; zeros(2, 32)], ...
%!               "steer", [sind(25); 0; cosd(25)]);
%! angles = -60:60;
%! far = 2 * [sind(angles); zeros(size (angles)); cosd(angles)];
%! [~, loudest] = max (abs (pistonarray (far, row, k, 30)));
%! assert (abs (angles(loudest) - 25) <= 1);
%!test # values do not depend on the pieces; long work shows a progress bar unless 'quiet' is given
%! many = struct ("l", 6e-3, "s", 0.4e-3, "positions", [((1:64) - 32.5) * 0.75e-3; zeros(2, 64)]);
%! N = 10000;
%! do
%!   N *= 2;
%!   points = [linspace(-20e-3, 20e-3, N); zeros(1, N); linspace(1e-3, 80e-3, N)];
%!   started = tic ();
%!   bar = evalc ("p = pistonarray (points, many, k, 40);");
%! until (toc (started) > 2)
%! assert (! isempty (regexp (bar, 'pistonarray \[#+\.+\] +\d+ %, [\d.]+ (s|min) left')));
%! assert (isempty (evalc ("q = pistonarray (points(:,19990:20000), many, k, 40, \"quiet\");")));
%! assert (p(19990:20000), q);
%! assert (isempty (evalc ("q = pistonarray (points, many, k, 40, \"quiet\");")));
%! assert (p, q);
%!error <p = pistonarray> pistonarray (points, one)
%!error <Sides must be from 1e-18> pistonarray (points, setfield (one, "s", 1e19), k)
%!error <coordinates at most 1e18> pistonarray (points, setfield (one, "positions", [1e19; 0; 0]), k)
%!error <k must be a finite real number> pistonarray (points, one, "k")
%!error <k must be a finite real number> pistonarray (points, one, Inf)
%!error <nabscissas must be an order> pistonarray (points, one, k, 513)
%!error <points must be> pistonarray (zeros (3, 0), one, k)
%!error <points must be> pistonarray (ones (2, 4), one, k)
%!error <points must be> pistonarray (single (points), one, k)
%!error <The only option is> pistonarray (points, one, k, 10, "loud")
%!error <Too many arguments> pistonarray (points, one, k, 10, 11)
%!error <array must be a scalar struct> pistonarray (points, 1, k)
%!error <array has an unknown field: position> pistonarray (points, struct ("position", 1), k)
%!error <array needs the field s> pistonarray (points, struct ("l", 1, "positions", [0; 0; 0]), k)
%!error <array.positions must be> pistonarray (points, struct ("l", 1, "s", 1, "positions", 0), k)
%!error <array.l must be a finite real number> pistonarray (points, setfield (one, "l", [1, 2]), k)
%!error <array.rotations must be> pistonarray (points, setfield (one, "rotations", 1), k)
%!error <array.rotations\(:,:,1\) must be a rotation matrix> pistonarray (points, setfield (one, "rotations", ones (3)), k)
%!error <array.weights must be> pistonarray (points, setfield (one, "weights", [1, 2]), k)
%!error <array.weights must be> pistonarray (points, setfield (one, "weights", NaN), k)
%!error <array must not have both> pistonarray (points, setfield (setfield (one, "steer", [0, 0, 1]), "focus", [0, 0, 1]), k)
%!error <array.steer must be a nonzero vector> pistonarray (points, setfield (one, "steer", [0, 0, 0]), k)
%!error <array.focus must be three finite real numbers> pistonarray (points, setfield (one, "focus", 1), k)
%!demo
%! lambda = 1500 / 1e6;
%! array.l = 15 * lambda;
%! array.s = 0.4 * lambda;
%! array.positions = [((1:64) - 32.5) * lambda / 2; zeros(2, 64)];
%! array.focus = [20e-3; 0; 60e-3];
%! x = (-200:200) * 0.2e-3;
%! z = (5:400) * 0.2e-3;
%! [X, Z] = ndgrid (x, z);
%! p = pistonarray ([X(:)'; zeros(1, numel (X)); Z(:)'], array, 2 * pi / lambda);
%! pistonplot (x, 0, z, p, 'dB');
