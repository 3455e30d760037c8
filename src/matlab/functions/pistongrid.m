% PISTONGRID  Pressure of a rectangular piston on a grid.
%
%   p = pistongrid (x, y, z, l, s, k)
%   p = pistongrid (x, y, z, l, s, k, 'tolerance', tolerance)
%   p = pistongrid (x, y, z, l, s, k, nabscissas)
%   p = pistongrid (..., 'quiet')
%   [p, used] = pistongrid (...)
%
% p(i,j,m) is the complex pressure at the point x(i), y(j), z(m): abs (p(:,:,1)) is a
% picture of the plane z(1), and pistonplot (x, y, z, p) draws a plane.  The piston, the
% units and the scale of p are those of pistonfield.
%
% Arguments (all lengths, and 1/k, in one unit; pistonplot takes metres)
%
%   x, y, z     the axes of the grid: real vectors of one or more values.
%   l, s        sides of the piston along y and along x, full lengths: 0, or from 1e-9 to
%               1e6 wavelengths.  A negative side reverses the sign of p.
%   k           wave number, 2 pi / wavelength.  In a lossy medium it is complex, 2 * pi * f / c
%               - 1i * pistonattenuation (a, f): its imaginary part is minus the attenuation in
%               nepers per unit of length, at most the magnitude of its real part.
%   tolerance   largest error of p, relative to the peak of |p| on the grid: from 1e-12 to
%               below 1.  Default: 1e-4.
%   nabscissas  order of the quadrature rule for all points, 1 to 512, or a table made by
%               pistonrule, instead of a tolerance.  [] means no order.
%   'quiet'     suppresses the progress bar, which appears if the work takes more than
%               half a second.
%
% Result
%
%   p           numel (x) by numel (y) by numel (z), complex double; NaN at points with a
%               coordinate that is infinite or NaN (with nabscissas, an infinite coordinate is
%               an error).
%   used        a struct that describes the computation:
%     orders      the lowest and the highest order of the integrals; [0, 0] if none was
%                 needed.
%     precision   of the integrals: 'single', 'double', 'both', or 'none' if none was
%                 needed.
%     nodes       the number of values of integrands; NaN if you pass nabscissas.
%     bound       upper bound of the absolute error of p; divide by max (abs (p(:))) for the
%                 relative one.  NaN if you pass nabscissas: its error is not known.
%
% How the tolerance is met: each integral gets an order from an error estimate that was
% verified by measurement (the page "theory" of the documentation), and double precision where
% single precision is not accurate enough.  Along evenly spaced axes the field may be
% interpolated.  Mirror images are computed once.  If double precision cannot meet the
% tolerance, the call ends with an error.
%
% An order is used unchanged, for all points: with a real k, p has the bits of pistonfield for
% this order.  With an order and a real k the pressure is computed on the device, which may be
% a GPU; otherwise on the cores of the CPU, or, if pistonfield is built for a GPU and there
% are many points, on the GPU.  Ctrl-C ends the work.
%
% Example: the plane y = 0 of a piston at 1 MHz in water
%
%   lambda = 1500 / 1e6;                      % m
%   x = (-75:75) * lambda / 15;
%   z = (1:300) * lambda / 15;
%   p = pistongrid (x, 0, z, 7.5 * lambda, 5 * lambda, 2 * pi / lambda);
%   pistonplot (x, 0, z, p);
%
% Errors: "x, y and z must be non-empty real vectors."; "l must be a finite real number.",
% the same for s; "k must be a finite number."; "k has a positive imaginary part ..."; "The
% attenuation must be ..."; "tolerance must be at least 1e-12 ..."; "nabscissas must be an order
% from 1 to 512, ..."; "Pass an order or a tolerance, not both."; "After k, pass ...";
% "Sides must be ..."; "A point is farther than 1e9 wavelengths ..."; "Double precision
% cannot keep ..." (far away, and where p is nearly 0 everywhere); too little memory; and,
% with an order, pistonfield's errors of the device.
%
% See also: pistonfield, pistonplot, pistonarray.

function [p, used] = pistongrid (x, y, z, l, s, k, varargin)

  if (nargin < 6)
    error ('pistongrid:arguments', 'Too few arguments. Call it as p = pistongrid (x, y, z, l, s, k).');
  end
  grid_ = readaxes ('pistongrid', {x, y, z});
  l = readnumber ('pistongrid', 'l', l);
  s = readnumber ('pistongrid', 's', s);
  k = readwavenumber ('pistongrid', k);
  [nabscissas, tolerance, quiet] = readoptions ('pistongrid', varargin);

  if (isempty (nabscissas))
    [p, used] = pressurewithin ('pistongrid', grid_, singlepiston (l, s), k, tolerance, quiet);
  elseif (~ isreal (k))
    [p, used] = arraypressure (grid_, singlepiston (l, s), k, nabscissas, 'pistongrid', quiet);
  else
    checklengths ('pistongrid', [l, s], [grid_{:}]);
    evaluate = @(first, last, ~) ...
      pistonfield_quiet (gridpoints (grid_, first, last), 0, l, s, k, 'cuda', nabscissas);
    sizes = cellfun (@numel, grid_);
    p = reshape (inpieces ('pistongrid', evaluate, prod (sizes), 2 ^ 21, 1, quiet), sizes);
    used = usedorder (nabscissas);
  end

end

%!shared x, y, z
%! x = [-2, 0.5, 1, 3];  y = [0, 0.25, 7];  z = [0.5, 4];
%!test # values are in the order of ndgrid
%! p = pistongrid (x, y, z, 7.5, 5, 2 * pi, 20);
%! assert (size (p), [4, 3, 2]);
%! for i = 1:4
%!   for j = 1:3
%!     for m = 1:2
%!       q = pistonfield_quiet ([x(i); y(j); z(m)], 0, 7.5, 5, 2 * pi, "cuda", 20);
%!       assert (p(i,j,m), q);
%!     endfor
%!   endfor
%! endfor
%!test # axes may be columns
%! assert (pistongrid (x', y', z', 1, 2, 3), pistongrid (x, y, z, 1, 2, 3));
%!test # the error is below the tolerance, a part of the peak on the grid, by default 1e-4
%! across = (-100:100) * 0.1e-3;
%! depths = (1:300) * 0.1e-3;
%! k = 2 * pi * 2.25e6 / 1500;
%! grid_ = {across, 0, depths, 20e-3, 10e-3, k};
%! [p, used] = pistongrid (grid_{:});
%! best = pistongrid (grid_{:}, 512);
%! peak = max (abs (best(:)));
%! errorof = @(q) max (abs (q(:) - best(:))) / peak;
%! assert (errorof (p) < 1e-4);
%! assert (used.bound > 0.5e-4 * peak && used.bound <= 1e-4 * peak);
%! [p2, loose] = pistongrid (grid_{:}, "tolerance", 1e-2);
%! assert (errorof (p2) < 1e-2);
%! assert (loose.nodes < used.nodes && loose.bound > 90 * used.bound);
%! [q, again] = pistongrid (grid_{:}, [], "tolerance", 1e-4, "quiet");
%! assert ({q, again}, {p, used});
%! assert (pistongrid (grid_{:}, "quiet", "tolerance", 1e-4), p);
%!test # used describes the computation
%! [p, used] = pistongrid (x, y, z, 7.5, 5, 2 * pi, "tolerance", 1e-3);
%! assert (fieldnames (used)', {"orders", "precision", "nodes", "bound"});
%! assert (used.precision, "single");
%! assert (used.orders(1) >= 1 && used.orders(1) < used.orders(2) && used.orders(2) < 30);
%! assert (used.nodes > 4 * 24 && used.nodes < 8 * 24 * used.orders(2));
%! assert (used.bound > 0.5e-3 * max (abs (p(:))) && used.bound <= 1e-3 * max (abs (p(:))));
%! [q, precise] = pistongrid (x, y, z, 7.5, 5, 2 * pi, "tolerance", 1e-9);
%! assert (precise.precision, "double");
%! assert (precise.nodes > used.nodes && precise.orders(2) > used.orders(2));
%! assert (max (abs (q(:) - p(:))) < 1e-3 * max (abs (q(:))));
%! [~, used] = pistongrid (1e5, 0, [1, 1e5], 7.5, 5, 2 * pi, "tolerance", 1e-4);
%! assert (any (strcmp (used.precision, {"double", "both"})));
%!test # a given order is used unchanged, for all points
%! [p, used] = pistongrid (x, y, z, 7.5, 5, 2 * pi, 4);
%! assert (used, struct ("orders", [4, 4], "precision", "single", "nodes", NaN, "bound", NaN));
%! assert (p(2,1,1), pistonfield_quiet ([0.5; 0; 0.5], 0, 7.5, 5, 2 * pi, "cuda", 4));
%! [~, used] = pistongrid (x, y, z, 7.5, 5, 2 * pi, 4.9);
%! assert (used.orders, [4, 4]);
%!test # the pressure is 0 or NaN everywhere, and complex
%! [p, used] = pistongrid (x, y, z, 7.5, 5, 0);
%! assert (iscomplex (p));
%! assert ({p, used.orders, used.precision}, {complex(zeros(4, 3, 2)), [0, 0], "none"});
%! assert (pistongrid (x, y, z, 0, 5, 1), complex (zeros (4, 3, 2)));
%! assert (isnan (pistongrid (NaN, NaN, 1, 7.5, 5, 1)));
%!test # points with a coordinate that is not finite do not affect others
%! p = pistongrid ([0.5, NaN, 1], 0.25, [1, Inf], 3, 2, 6);
%! assert (isnan (p(:,:)), [false, true; true, true; false, true]);
%! assert (p([1, 3],1,1), pistongrid ([0.5, 1], 0.25, 1, 3, 2, 6));
%!test # a negative side reverses the sign, as in pistonfield
%! p = pistongrid (x, y, z, 3, 2, 6);
%! assert (pistongrid (x, y, z, -3, 2, 6), -p);
%! assert (pistongrid (x, y, z, 3, -2, 6), -p);
%! assert (pistongrid (x, y, z, -3, -2, 6), p);
%! assert (max (abs (pistongrid (x, y, z, -3, 2, 6, 200)(:) + p(:))) < 1e-4 * max (abs (p(:))));
%!test # in a lossy medium, with a tolerance and with an order; k - 0i is real
%! [p, used] = pistongrid (x, y, z, 7.5, 5, 2 * pi - 0.2i, "tolerance", 1e-8);
%! for options = {{}, {"tolerance", 1e-3}, {60}, {pistonrule(60)}}
%!   q = pistongrid (x, y, z, 7.5, 5, 2 * pi - 0.2i, options{1}{:});
%!   assert (size (q), [4, 3, 2]);
%!   assert (max (abs (q(:) - p(:))) < 1e-3 * max (abs (p(:))));
%! endfor
%! [~, used] = pistongrid (x, y, z, 7.5, 5, 2 * pi - 0.2i, 20);
%! assert (used.orders, [20, 20]);
%! assert (pistongrid (x, y, z, 7.5, 5, complex (2 * pi, 0)), pistongrid (x, y, z, 7.5, 5, 2 * pi));
%! assert (pistongrid (x, y, z, -7.5, 5, 2 * pi - 0.2i, "tolerance", 1e-8), -p);
%! assert (pistongrid (x, y, z, 7.5, 5, -2 * pi - 0.2i, "tolerance", 1e-8), -conj (p));
%!test # of a negative wave number, the negative conjugate
%! assert (pistongrid (x, y, z, 3, 2, -6), -conj (pistongrid (x, y, z, 3, 2, 6)));
%!test # one point
%! assert (size (pistongrid (0, 0, 1, 1, 1, 1)), [1, 1]);
%!test # a table of pistonrule
%! p = pistongrid (x, y, z, 1, 2, 3, pistonrule (10));
%! assert (max (abs (p(:) - pistongrid (x, y, z, 1, 2, 3, 10)(:))) < 1e-6);
%!test # it prints nothing
%! assert (isempty (evalc ("p = pistongrid (x, y, z, 1, 2, 3);")));
%!test # behind the piston, next to the plane of an edge, and on a grid with one long axis
%! for grid_ = {{.4118, .48732556881230871, -1.1, .97465108273727086, 2.728, 2 * pi}, ...
%!              {0.3 + 1e-7, 0.7, -0.006, 3, 0.6, 2 * pi}, ...
%!              {[3, 3.6], linspace(-6, 3, 2001), [1, 1.5], 3, 10, 2 * pi}}
%!   best = pistongrid (grid_{1}{:}, "tolerance", 1e-9);
%!   p = pistongrid (grid_{1}{:});
%!   assert (max (abs (p(:) - best(:))) < 1e-4 * max (abs (best(:))));
%! endfor
%!test # long work shows a progress bar unless 'quiet' is given, and p is the same
%! N = 60;
%! do
%!   N = ceil (1.4 * N);
%!   grid_ = {linspace(-20, 30, N), linspace(-20, 30, N), linspace(1, 30, 100), 20, 20, 6, "tolerance", 1e-9};
%!   started = tic ();
%!   bar = evalc ("p = pistongrid (grid_{:});");
%! until (toc (started) > 1)
%! assert (! isempty (regexp (bar, 'pistongrid \[#+\.+\] +\d+ %, [\d.]+ (s|min) left')));
%! assert (! isempty (regexp (bar, 'pistongrid \[#{40}\] 100 %, took [\d.]+ (s|min) *\n$')));
%! assert (isempty (evalc ("q = pistongrid (grid_{:}, \"quiet\");")));
%! assert (p, q);
%!error <p = pistongrid> pistongrid (1, 2, 3, 4, 5)
%!error <x, y and z must be non-empty real vectors> pistongrid (ones (2), 2, 3, 4, 5, 6)
%!error <x, y and z must be non-empty real vectors> pistongrid ([], 2, 3, 4, 5, 6)
%!error <x, y and z must be non-empty real vectors> pistongrid ("x", 2, 3, 4, 5, 6)
%!error <x, y and z must be non-empty real vectors> pistongrid (1i, 2, 3, 4, 5, 6)
%!error <Sides must be from 1e-18> pistongrid (1, 2, 3, 1e-19, 5, 6, 10)
%!error <Sides must be 0 or from 1e-9 to 1e6 wavelengths> pistongrid (1, 2, 3, 1e-19, 5, 6)
%!error <Sides must be 0 or from 1e-9 to 1e6 wavelengths> pistongrid (1, 2, 3, 4, 1e7, 6)
%!test # the error of the engine has this function's name, and no other
%! try
%!   pistongrid (0, 0, 1e12, 1, 1, 6);
%!   error ("no error");
%! catch failure
%!   assert (failure.identifier, "pistongrid:field");
%!   assert (strncmp (failure.message, "A point is farther", 18));
%! end_try_catch
%!error <A point is farther than 1e9 wavelengths from the origin> pistongrid (1, -1e19, 3, 4, 5, 6)
%!error <Double precision cannot keep the tolerance .* Ask for at least> pistongrid (0, 0, 1e5, 1, 1, 6, "tolerance", 1e-12)
%!error <tolerance must be at least 1e-12> pistongrid (1, 2, 3, 4, 5, 6, "tolerance", 9e-13)
%!error <less than 1> pistongrid (1, 2, 3, 4, 5, 6, "tolerance", 1)
%!error <tolerance must be> pistongrid (1, 2, 3, 4, 5, 6, "tolerance", [1e-3, 1e-4])
%!error <tolerance must be> pistongrid (1, 2, 3, 4, 5, 6, "tolerance", "quiet")
%!error <Pass an order or a tolerance, not both> pistongrid (1, 2, 3, 4, 5, 6, 10, "tolerance", 1e-3)
%!error <After k, pass an order or a table> pistongrid (1, 2, 3, 4, 5, 6, "tolerance")
%!error <After k, pass an order or a table> pistongrid (1, 2, 3, 4, 5, 6, "loud")
%!error <After k, pass an order or a table> pistongrid (1, 2, 3, 4, 5, 6, 10, 11)
%!error <coordinates at most 1e18> pistongrid (1, -1e19, 3, 4, 5, 6, 10)
%!error <s must be a finite real number> pistongrid (1, 2, 3, 4, {}, 6)
%!error <k must be a finite number> pistongrid (1, 2, 3, 4, 5, "6")
%!error <k must be a finite number> pistongrid (1, 2, 3, 4, 5, [6, 7])
%!error <k has a positive imaginary part> pistongrid (1, 2, 3, 4, 5, 6 + 1i)
%!error <k has a positive imaginary part> pistongrid (1, 2, 3, 4, 5, 6 + 1i, 20)
%!error <The attenuation must be at most the real part of k> pistongrid (1, 2, 3, 4, 5, 6 - 7i)
%!error <nabscissas must be an order from 1 to 512> pistongrid (1, 2, 3, 4, 5, 6, 0)
%!error <a table made by pistonrule> pistongrid (1, 2, 3, 4, 5, 6, [[-1; 1] / sqrt(3), [1; 1]])
%!demo
%! lambda = 1500 / 1e6;
%! x = (-75:75) * lambda / 15;
%! z = (1:300) * lambda / 15;
%! p = pistongrid (x, 0, z, 7.5 * lambda, 5 * lambda, 2 * pi / lambda);
%! pistonplot (x, 0, z, p);
