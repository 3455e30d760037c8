% PISTONARRAY  Pressure of an array of rectangular pistons.
%
%   p = pistonarray (points, array, k)
%   p = pistonarray ({x, y, z}, array, k)
%   p = pistonarray (..., 'tolerance', tolerance)
%   p = pistonarray (..., nabscissas)
%   p = pistonarray (..., 'quiet')
%   [p, used] = pistonarray (...)
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
%   x, y, z     instead of points, the axes of a grid: real vectors of one or more values.
%               A grid is faster than a list of its points: along an evenly spaced axis the
%               field is interpolated from few samples, which equal pistons share, and mirror
%               images are computed once.
%   array       a struct; l, s and positions are required:
%     l, s        sides along the piston's own y and along its own x: one number for all
%                 pistons, or one for each; 0, or from 1e-9 to 1e6 wavelengths.  A negative
%                 side reverses the sign of a piston's pressure.
%     positions   3 x M, the centres.
%     rotations   3 x 3, or 3 x 3 x M: the columns are the directions of the piston's own
%                 x, y and z.  Default: no rotation.
%     weights     M complex numbers, the velocity of each piston.  Default: 1.
%     steer       3 numbers, a direction, for example [sind(a); 0; cosd(a)]: sets the
%                 phases of the weights to send a plane wave in this direction.
%     focus       3 numbers, a point: sets the phases of the weights so that the waves
%                 from the pistons' centres arrive there in phase.  Not with steer.
%   k           wave number, 2 pi / wavelength.  In a lossy medium it is complex, 2 * pi * f / c
%               - 1i * pistonattenuation (a, f): its imaginary part is minus the attenuation in
%               nepers per unit of length, at most the magnitude of its real part.  steer and
%               focus take the real part.
%   tolerance   largest error of p, relative to the peak of |p| at the points of this
%               call: from 1e-12 to below 1.  Default: 1e-4.
%   nabscissas  order of the quadrature rule for all pistons and points, 1 to 512, or a
%               table made by pistonrule, instead of a tolerance.  [] means no order.
%   'quiet'     suppresses the progress bar, which appears if the work takes more than
%               half a second.
%
% Result
%
%   p           N x 1 complex double, or numel (x) by numel (y) by numel (z); NaN at points
%               with a coordinate that is infinite or NaN (with nabscissas, an infinite
%               coordinate is an error).
%   used        a struct that describes the computation: orders, precision, nodes and bound
%               as for pistongrid, and
%     weights     M x 1, including the phases of steering and focusing.
%
% How the tolerance is kept: see pistongrid.  The peak is that of the sum: if pistons cancel
% each other, each of them is computed more accurately.
%
% An order is used unchanged, for all pistons and points.  With an order and a real k the
% pressure is computed on the device, which may be a GPU; otherwise on the cores of the CPU,
% or, if pistonfield is built for a GPU and there are many points and pistons, on the GPU.
% Ctrl-C ends the work.
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
%   p = pistonarray ({x, 0, z}, array, 2 * pi / lambda);
%   pistonplot (x, 0, z, p, 'dB');
%
% Errors: "points must be a full real double matrix ..."; "x, y and z must be non-empty real
% vectors."; "array ...", with the field and its requirement; "k must be a finite
% number."; "k has a positive imaginary part ..."; "The attenuation must be ..."; "tolerance must be at least 1e-12 ..."; "nabscissas must be an order from 1 to
% 512, ..."; "Pass an order or a tolerance, not both."; "After k, pass ..."; "Sides must be
% ..."; "A point is farther than 1e9 wavelengths ..."; "Double precision cannot keep ..." (far
% away, and where pistons cancel each other almost completely); too little memory; and, with
% an order, pistonfield's errors of the device.
%
% See also: pistonfield, pistongrid, pistonlinear, pistonlens, pistonplot.

function [p, used] = pistonarray (points, array, k, varargin)

  if (nargin < 3)
    error ('pistonarray:arguments', 'Too few arguments. Call it as p = pistonarray (points, array, k).');
  end
  points = readpoints ('pistonarray', points);
  k = readwavenumber ('pistonarray', k);
  [nabscissas, tolerance, quiet] = readoptions ('pistonarray', varargin);
  array = readarray (array, k);

  if (isempty (nabscissas))
    [p, used] = pressurewithin ('pistonarray', points, array, k, tolerance, quiet);
  else
    coordinates = points;
    if (iscell (points))
      coordinates = [points{:}];
    end
    checklengths ('pistonarray', [array.l; array.s], coordinates, array.positions);
    [p, used] = arraypressure (points, array, k, nabscissas, 'pistonarray', quiet);
  end
  used.weights = array.weights;

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
%!test # the error is below the tolerance, a part of the sum's peak, by default 1e-4
%! tall = struct ("l", 5e-3, "s", 0.25e-3, "positions", [((1:32) - 16.5) * 0.3e-3; zeros(2, 32)]);
%! x = (-60:60) * 0.1e-3;
%! z = (1:60) * 0.2e-3;
%! [X, Z] = ndgrid (x, z);
%! plane = [X(:)'; zeros(1, numel (X)); Z(:)'];
%! high = 2 * pi * 5e6 / 1500;
%! errorof = @(q, best) max (abs (q(:) - best)) / max (abs (best));
%! for weights = {ones(1, 32), (-1) .^ (1:32)}          # alternating weights nearly cancel
%!   tall.weights = weights{1};
%!   best = pistonarray (plane, tall, high, 512);
%!   [p, used] = pistonarray (plane, tall, high);
%!   assert (errorof (p, best) < 1e-4);
%!   assert (used.bound > 0.5e-4 * max (abs (p)) && used.bound <= 1e-4 * max (abs (p)));
%!   [p2, loose] = pistonarray (plane, tall, high, "tolerance", 1e-2);
%!   assert (errorof (p2, best) < 1e-2);
%!   assert (loose.nodes < used.nodes && loose.bound > 90 * used.bound);
%!   [q, again] = pistonarray (plane, tall, high, [], "quiet", "tolerance", 1e-4);
%!   assert ({q, again}, {p, used});
%!   assert (errorof (pistonarray ({x, 0, z}, tall, high), best) < 1e-4);
%! endfor
%!test # a grid has the shape of its axes, and the pressures of its points
%! few = struct ("l", [3, 2, 3], "s", 1, "positions", [-2, 0.25, 3; 0, 1, 0; 0, 0, 0.5], "weights", [1, 2i, -1]);
%! axes_ = {single([-1, 0, 2, 5]'), [0, 3, 4], sparse([1, 6])};
%! [X, Y, Z] = ndgrid (double (axes_{1}), axes_{2}, full (axes_{3}));
%! list = [X(:)'; Y(:)'; Z(:)'];
%! p = pistonarray (axes_, few, 3, 20);
%! assert (size (p), [4, 3, 2]);
%! assert (p(:), pistonarray (list, few, 3, 20));
%! [p, used] = pistonarray (axes_, few, 3, "tolerance", 1e-9);
%! assert (size (p), [4, 3, 2]);
%! q = pistonarray (list, few, 3, "tolerance", 1e-9);
%! assert (size (q), [24, 1]);
%! assert (max (abs (p(:) - q)) < 2e-9 * max (abs (q)));
%! assert (used.precision, "double");
%! assert (size (pistonarray ({0, 0, 1}, few, 3)), [1, 1]);
%!test # a given order is used unchanged
%! [p, used] = pistonarray (points, one, k, 3);
%! assert (p, pistonfield_quiet (points, 0, 6e-3, 4e-3, k, "cuda", 3));
%! assert (used, struct ("orders", [3, 3], "precision", "single", "nodes", NaN, "bound", NaN, "weights", 1));
%!test # a piston with weight 0
%! [p, used] = pistonarray (points, setfield (one, "weights", 0), k);
%! assert (iscomplex (p));
%! assert ({p, used.orders, used.precision}, {complex(zeros(4, 1)), [0, 0], "none"});
%!test # a negative side reverses the sign of its piston
%! two = struct ("l", [6e-3, 4e-3], "s", 3e-3, "positions", [0, 7e-3; 0, 0; 0, 0], "weights", [1, 1i]);
%! p = pistonarray (points, two, k);
%! q = pistonarray (points, setfield (setfield (two, "l", [6e-3, -4e-3]), "weights", [1, -1i]), k);
%! assert (p, q);
%! [~, used] = pistonarray (points, setfield (two, "s", -3e-3), k);
%! assert (used.weights, [1; 1i]);
%!test # a point behind a piston and next to the plane of its edge
%! point = [0; 3e-3 + 1e-9; -0.01];
%! best = pistonarray (point, one, k, "tolerance", 1e-9);
%! assert (abs (pistonarray (point, one, k) - best) < 1e-4 * abs (best));
%!test # waves arrive together at the focus
%! row = struct ("l", 6e-3, "s", 0.4e-3, "positions", [((1:16) - 8.5) * 0.75e-3; zeros(2, 16)], ...
%!               "focus", [3e-3; 0; 40e-3]);
%! [p, used] = pistonarray (row.focus, row, k, 30);
%! w = used.weights;
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
%!test # the same for a tolerance
%! many = struct ("l", 6e-3, "s", 0.4e-3, "positions", [((1:64) - 32.5) * 0.75e-3; zeros(2, 64)]);
%! N = 50000;
%! do
%!   N *= 2;
%!   points = [linspace(-20e-3, 20e-3, N); zeros(1, N); linspace(1e-3, 80e-3, N)];
%!   started = tic ();
%!   bar = evalc ("p = pistonarray (points, many, k, \"tolerance\", 1e-9);");
%! until (toc (started) > 1)
%! assert (! isempty (regexp (bar, 'pistonarray \[#+\.+\] +\d+ %, [\d.]+ (s|min) left')));
%! assert (isempty (evalc ("q = pistonarray (points, many, k, \"tolerance\", 1e-9, \"quiet\");")));
%! assert (p, q);
%!error <p = pistonarray> pistonarray (points, one)
%!error <Sides must be from 1e-18> pistonarray (points, setfield (one, "s", 1e19), k, 10)
%!error <coordinates at most 1e18> pistonarray (points, setfield (one, "positions", [1e19; 0; 0]), k, 10)
%!error <Sides must be 0 or from 1e-9> pistonarray (points, setfield (one, "s", 1e4), k)
%!error <centres within 1e9 wavelengths> pistonarray (points, setfield (one, "positions", [1e19; 0; 0]), k)
%!error <A point is farther than> pistonarray ([0; 0; 1e9], one, k)
%!error <x, y and z must be non-empty real vectors> pistonarray ({1, 2}, one, k)
%!error <x, y and z must be non-empty real vectors> pistonarray ({1, 2, []}, one, k)
%!error <x, y and z must be non-empty real vectors> pistonarray ({1, 2, {3}}, one, k)
%!error <tolerance must be> pistonarray (points, one, k, "tolerance", NaN)
%!error <Pass an order or a tolerance, not both> pistonarray (points, one, k, 10, "tolerance", 1e-3)
%!error <k must be a finite number> pistonarray (points, one, "k")
%!error <k must be a finite number> pistonarray (points, one, Inf)
%!error <k must be a finite number> pistonarray (points, one, complex (1, NaN))
%!error <k has a positive imaginary part> pistonarray (points, one, k + 1i)
%!error <The attenuation must be at most> pistonarray (points, one, k - 1.1i * k, 10)
%!test # in a lossy medium, against a sum over small elements
%! at = [-6e-3, 0, 1e-3, 4e-3; 0, 2e-3, -3e-3, 1e-3; 5e-3, 1e-3, 20e-3, 60e-3];
%! K = k - 200i;
%! [X, Y] = ndgrid (((1:300) - 150.5) / 300 * 4e-3, ((1:400) - 200.5) / 400 * 6e-3);
%! exact = zeros (4, 1);
%! for n = 1:4
%!   R = sqrt ((at(1,n) - X) .^ 2 + (at(2,n) - Y) .^ 2 + at(3,n) ^ 2);
%!   exact(n) = K / (2 * pi) * sum (exp (-1i * K * R(:)) ./ R(:)) * (4e-3 * 6e-3) / numel (R);
%! endfor
%! for options = {{}, {"tolerance", 1e-7}, {40}}
%!   assert (max (abs (pistonarray (at, one, K, options{1}{:}) - exact)) < 2e-4 * max (abs (exact)));
%! endfor
%! assert (max (abs (exact)) < 0.9 * max (abs (pistonarray (at, one, k))));
%!test # with an order, too; and without loss it is that of a real k
%! at = [-6e-3, 0, 1e-3, 4e-3; 0, 2e-3, -3e-3, 1e-3; 5e-3, 1e-3, 20e-3, 60e-3];
%! [p, used] = pistonarray (at, one, k - 5i, 12);
%! assert (used.orders, [12, 12]);
%! assert (isnan (used.bound));
%! assert (pistonarray (at, one, complex (k, 0)), pistonarray (at, one, k));
%! assert (pistonarray (at, one, complex (k, 0), 12), pistonarray (at, one, k, 12));
%! p = pistonarray (at, one, k, 12);
%! assert (max (abs (pistonarray (at, one, k - 1e-9i, 12) - p)) < 1e-5 * max (abs (p)));
%! assert (pistonarray (at, one, -k - 5i, 12), -conj (pistonarray (at, one, k - 5i, 12)));
%!test # steering takes the real part
%! array = struct ("l", 6e-3, "s", 1e-3, "positions", [-2e-3, 2e-3; 0, 0; 0, 0], "focus", [0; 0; 20e-3]);
%! [~, used] = pistonarray ([0; 0; 1e-2], array, k);
%! [~, lossy] = pistonarray ([0; 0; 1e-2], array, k - 50i);
%! assert (lossy.weights, used.weights);
%!error <nabscissas must be an order> pistonarray (points, one, k, 513)
%!error <points must be> pistonarray (zeros (3, 0), one, k)
%!error <points must be> pistonarray (ones (2, 4), one, k)
%!error <points must be> pistonarray (single (points), one, k)
%!error <After k, pass> pistonarray (points, one, k, 10, "loud")
%!error <After k, pass> pistonarray (points, one, k, 10, 11)
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
%! p = pistonarray ({x, 0, z}, array, 2 * pi / lambda);
%! pistonplot (x, 0, z, p, 'dB');
