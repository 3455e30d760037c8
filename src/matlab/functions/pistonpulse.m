% PISTONPULSE  Pressure of pistons against time, for a pulse.
%
%   [p, t] = pistonpulse (points, array, medium, excitation)
%   [p, t] = pistonpulse ({x, y, z}, array, medium, excitation)
%   [p, t] = pistonpulse (..., 'rate', rate)
%   [p, t] = pistonpulse (..., 'times', times)
%   [p, t] = pistonpulse (..., 'tolerance', tolerance)
%   [p, t] = pistonpulse (..., 'quiet')
%   [p, t, used] = pistonpulse (...)
%
% Adds the pressures of M pistons that move with the velocity v(t) of the excitation, each after
% its own delay:
%
%   p(r, t) = sum over m of  weights(m) / (2 pi c)
%             * integral over piston m of  v'(t - delays(m) - R / c) / R  dS
%
% Here c is the speed of sound and R the distance from a point of the piston to r.  The pressure
% is without the factor rho c, so that 1 is the pressure of a plane wave with the velocity 1:
% multiply p by rho * c for pascals.  Each piston lies in its own rigid plane.  In a medium that
% attenuates, p is the sum of the frequencies of v, each with its own attenuation.
%
% Arguments (in metres and seconds; if nothing is attenuated, any units)
%
%   points      3 x N real double, one point per column.  In a medium that attenuates, none may be
%               straight behind a piston.
%   x, y, z     instead of points, the axes of a grid: real vectors of one or more values.
%   array       a struct as for pistonarray; l, s and positions are required:
%     l, s        sides along the piston's own y and along its own x.
%     positions   3 x M, the centres.
%     rotations   3 x 3, or 3 x 3 x M.
%     weights     M real numbers.  Default: 1.
%     delays      M real numbers: how much later than the excitation each piston moves.
%                 Default: 0.
%     steer       3 numbers, a direction: adds the delays that send a plane wave there.
%     focus       3 numbers, a point: adds the delays with which the waves from the pistons'
%                 centres arrive there at one time, |focus| / c.  Not with steer.
%   medium      the speed of sound, or a struct:
%     speed       of sound, positive.
%     attenuation in dB/(cm MHz ^ exponent), at least 0.  Default: 0.
%     exponent    from 0 to 3.  Default: 1.
%     reference   the frequency in Hz at which waves have the speed above.  At other frequencies
%                 it differs, as causality requires.  Default: 0, one speed for all.
%   excitation  the velocity v(t), made by pistonburst or pistongauss, or a struct:
%     samples     one or more real numbers, v at evenly spaced times.
%     rate        how many per second.
%     start       the time of the first one.  Default: 0.
%   rate        how many times per second the result has.  Default: that of the excitation.
%   times       the times of the result: one or more, evenly spaced, ascending.  Default: from
%               the first wave at any of the points to the last, at the speed of the
%               medium.  Where it attenuates, a little of the pulse may lie before and after.
%   tolerance   largest error of p, relative to the peak of |p| at the points of this call at
%               any time: from 1e-6 to below 1.  Default: 1e-4.
%   'quiet'     suppresses the progress bar, which appears if the work takes more than
%               half a second.
%
% Result
%
%   p           numel (t) x N real double, or numel (t) by numel (x) by numel (y) by numel (z);
%               NaN at points with a coordinate that is infinite or NaN.
%   t           the times, a column.
%   used        a struct that describes the computation:
%     bound       an upper bound of the absolute error of p.
%     nodes       how many values of integrands were computed.
%     frequencies how many frequencies were computed; 0 in a medium that does not attenuate,
%                 in which the pulse is summed in time.
%     delays      M x 1, including those of steering and focusing.
%
% Between its samples v is the cubic spline through them, which is 0 beyond two steps from the
% first and the last: so the samples should begin and end near 0.
%
% Example: two cycles at 5 MHz from 64 elements, focused at 30 mm
%
%   array = pistonlinear (64, 0.3e-3, 5e-3, 0.27e-3);
%   array.focus = [0; 0; 30e-3];
%   excitation = pistonburst (5e6, 2, 100e6);
%   [p, t] = pistonpulse ([0; 0; 30e-3], array, 1540, excitation);
%   plot (t * 1e6, p);
%   xlabel ('t in \mus');
%
% Errors: "points must be a full real double matrix ..."; "x, y and z must be non-empty real
% vectors."; "array ...", "medium ..." and "excitation ...", with the field and its requirement;
% "After excitation, only these are allowed: ..."; "Pass a rate or times, not both."; "rate must be
% positive."; "times must be one or more finite numbers in equal steps upwards."; those of the library
% about a point that is too far, the tolerance, and too little memory.
%
% See also: pistonecho, pistonburst, pistongauss, pistonarray, pistonpeaks.

function [p, t, used] = pistonpulse (points, array, medium, excitation, varargin)

  if (nargin < 4)
    error ('pistonpulse:arguments', ...
           'Too few arguments. Call it as [p, t] = pistonpulse (points, array, medium, excitation).');
  end
  points = readpoints ('pistonpulse', points);
  medium = readmedium ('pistonpulse', medium);
  excitation = readexcitation ('pistonpulse', excitation);
  options = readpulseoptions ('pistonpulse', varargin, {});
  array = readdelayed ('pistonpulse', array, medium(1));
  [p, t, used] = againsttime ('pistonpulse', 'pulse', points, {array}, medium, excitation, options);
  used.delays = array.delays;

end

%!function p = onaxis (z, l, s, c, v, t) # the plane wave, less the arcs of circles about the axis off the piston
%!  edges = sqrt (z ^ 2 + [min(l, s), max(l, s), norm([l, s])] .^ 2 / 4) / c;
%!  p = v (t - z / c) - v (t - edges(3));
%!  for n = 1:2
%!    u = (0.5:2000)' / 2000;               # substituted, so that the arcs' roots at the edges are smooth
%!    s_ = edges(n) + diff (edges(n:n+1)) * (0:2000)' .^ 2 / 2000 ^ 2;
%!    radius = sqrt ((c * (edges(n) + diff (edges(n:n+1)) * u .^ 2)) .^ 2 - z ^ 2);
%!    lost = 2 / pi * (acos (min (1, l / 2 ./ radius)) + acos (min (1, s / 2 ./ radius)));
%!    p -= sum (-diff (v (t' - s_)) .* lost, 1)';
%!  endfor
%!endfunction
%!function X = at_frequency (x, t, f)       # the Fourier transform
%!  X = exp (-2i * pi * f * t(:).') * x * (t(2) - t(1));
%!endfunction

%!shared c, f, one, row, burst, points
%! c = 1500;
%! f = 1e6;
%! one = struct ("l", 6e-3, "s", 4e-3, "positions", [0; 0; 0]);
%! row = struct ("l", 6e-3, "s", 0.7e-3, "positions", [((1:8) - 4.5) * 0.75e-3; zeros(2, 8)], "weights", [1, 2, 3, -1, 1, 1, 0, 0.5]);
%! burst = pistonburst (f, 2, 40 * f);
%! points = [-6e-3, 0, 1e-3, 4e-3; 0, 2e-3, -3e-3, 1e-3; 5e-3, 1e-3, 20e-3, 60e-3];
%!test # on the axis, against the closed form
%! t = (0:400)' / 40e6 + 3e-6;
%! v = @(t) (t >= 0 & t <= 2 / f) .* sin (2 * pi * f * t) .* sin (pi * f * t / 2) .^ 2;
%! fine = pistonburst (f, 2, 200 * f);
%! for tolerance = [1e-4, 1e-6]
%!   for z = [5e-3, 12e-3]
%!     exact = onaxis (z, one.l, one.s, c, v, t);
%!     p = pistonpulse ([0; 0; z], one, c, fine, "times", t, "tolerance", tolerance);
%!     assert (max (abs (p - exact)) < (tolerance + 2e-6) * max (abs (exact)));
%!   endfor
%! endfor
%!test # at each frequency, the pressure of pistonarray times i and the spectrum of the excitation
%! [p, t] = pistonpulse (points, row, c, burst);
%! te = (0:numel (burst.samples) - 1) / burst.rate;
%! for g = [0.5, 1, 1.3] * f
%!   V = at_frequency (burst.samples, te, g);
%!   P = pistonarray (points, row, 2 * pi * g / c, "tolerance", 1e-8);
%!   assert (max (abs (at_frequency (p, t, g).' - 1i * V * P)) < 5e-4 * max (abs (V * P)));
%! endfor
%!test # a plane wave has the velocity of the piston until the first wave of an edge
%! wide = struct ("l", 1, "s", 1, "positions", [0; 0; 0]);
%! t = (0:80)' / burst.rate;
%! p = pistonpulse ([0; 0; 0.1], wide, c, burst, "times", t + 0.1 / c);
%! assert (p, burst.samples, 2e-4);
%!test # weights, delays, positions and rotations
%! [p, t] = pistonpulse (points, row, c, burst);
%! q = 0;
%! for m = 1:8
%!   each = struct ("l", row.l, "s", row.s, "positions", row.positions(:,m), "weights", row.weights(m));
%!   q += pistonpulse (points, each, c, burst, "times", t);
%! endfor
%! peak = max (abs (p(:)));
%! assert (p, q, 5e-4 * peak);
%! later = setfield (row, "delays", 3 / burst.rate * ones (1, 8));
%! assert (pistonpulse (points, later, c, burst, "times", t)(4:end,:), p(1:end-3,:), 2e-4 * peak);
%! R = [0, 0, 1; 0, 1, 0; -1, 0, 0];
%! moved = setfield (setfield (row, "positions", R * row.positions + [1e-3; 0; 2e-3]), "rotations", R);
%! assert (pistonpulse (R * points + [1e-3; 0; 2e-3], moved, c, burst, "times", t), p, 2e-4 * peak);
%! reversed = setfield (setfield (row, "s", -row.s), "weights", -row.weights);
%! assert (pistonpulse (points, reversed, c, burst, "times", t), p);
%!test # the default times have all of the pulse, in multiples of 1 / rate
%! [p, t] = pistonpulse (points(:,3), one, c, burst);
%! assert (t * burst.rate, round (t * burst.rate), 1e-9);
%! assert (diff (t) * burst.rate, ones (numel (t) - 1, 1), 1e-9);
%! [q, far] = pistonpulse (points(:,3), one, c, burst, "times", (round (t(1) * 40e6) + (-100:numel (t) + 100)) / 40e6);
%! assert (q(101:100+numel (t)), p, 2e-4 * max (abs (p)));
%! assert (max (abs (q([1:101, 101+numel(t):end]))) < 2e-4 * max (abs (p)));
%! assert (t(1) * c < 20e-3 && t(1) > 20e-3 / c - 3 / burst.rate);
%! [q, s] = pistonpulse (points(:,3), one, c, burst, "rate", 3 * burst.rate);
%! assert (1 / (s(2) - s(1)), 3 * burst.rate, -1e-6);
%! assert (interp1 (s, q, t(2:end-1), "spline"), p(2:end-1), 2e-4 * max (abs (p)));
%!test # waves arrive together at the focus, |focus| / c later than the excitation
%! even = setfield (rmfield (row, "weights"), "focus", [6e-3; 0; 8e-3]);
%! [p, t, used] = pistonpulse (even.focus, even, c, burst);
%! expected = (norm (even.focus) - sqrt (sum ((even.focus - even.positions) .^ 2)))' / c;
%! assert (used.delays, expected, 1e-15);
%! assert (used.frequencies, 0);
%! apart = pistonpulse (even.focus, rmfield (even, "focus"), c, burst, "times", t);
%! assert (max (abs (p)) > 1.2 * max (abs (apart)));
%! [~, ~, steered] = pistonpulse (points, setfield (rmfield (even, "focus"), "steer", [3, 0, 4]), c, burst);
%! assert (steered.delays, 0.6 * row.positions(1,:)' / c, 1e-18);
%! [~, ~, both] = pistonpulse (points, setfield (even, "delays", (1:8) * 1e-7), c, burst);
%! assert (both.delays, expected + (1:8)' * 1e-7, 1e-15);
%!test # a grid has the pressures of its points; media as numbers and structs; one time
%! axes_ = {[-1e-3, 2e-3], 0, single([4e-3, 8e-3, 9e-3])};
%! [X, Y, Z] = ndgrid (axes_{1}, axes_{2}, double (axes_{3}));
%! [p, t] = pistonpulse (axes_, one, c, burst);
%! assert (size (p), [numel(t), 2, 1, 3]);
%! assert (p(:,:), pistonpulse ([X(:)'; Y(:)'; Z(:)'], one, struct ("speed", single (c)), burst));
%! middle = round (numel (t) / 2);
%! assert (pistonpulse (axes_, one, c, burst, "times", t(middle))(:), p(middle,:)(:), 2e-4 * max (abs (p(:))));
%!test # attenuation: each frequency has its own wave number
%! lossy = struct ("speed", c, "attenuation", 2, "exponent", 1.1);
%! t = (-400:8000) / burst.rate;            % with the tails that attenuation adds
%! [p, t, used] = pistonpulse (points(:,3:4), one, lossy, burst, "times", t);
%! assert (used.frequencies > 10);
%! te = (0:numel (burst.samples) - 1) / burst.rate;
%! for g = [0.7, 1.2] * f
%!   V = at_frequency (burst.samples, te, g);
%!   P = pistonarray (points(:,3:4), one, 2 * pi * g / c - 1i * pistonattenuation (2, g, 1.1), "tolerance", 1e-8);
%!   assert (max (abs (at_frequency (p, t, g).' - 1i * V * P)) < 1e-3 * max (abs (V * P)));
%! endfor
%!test # points that are not finite
%! p = pistonpulse ([0, NaN, 0; 0, 0, Inf; 5e-3, 5e-3, 5e-3], one, c, burst);
%! assert (isnan (p(1,:)), [false, true, true]);
%! assert (all (isfinite (p(:,1))));
%!test # long work shows a progress bar, unless 'quiet' is given
%! many = struct ("l", 6e-3, "s", 0.4e-3, "positions", [((1:64) - 32.5) * 0.75e-3; zeros(2, 64)]);
%! N = 200;
%! do
%!   N *= 2;
%!   where = [linspace(-20e-3, 20e-3, N); zeros(1, N); linspace(1e-3, 80e-3, N)];
%!   started = tic ();
%!   bar = evalc ("p = pistonpulse (where, many, c, burst, 'tolerance', 1e-5);");
%! until (toc (started) > 1.5 || N > 1e5)
%! assert (! isempty (regexp (bar, 'pistonpulse \[#+\.+\] +\d+ %, [\d.]+ (s|min) left')));
%! assert (isempty (evalc ("q = pistonpulse (where, many, c, burst, 'tolerance', 1e-5, 'quiet');")));
%! assert (p, q);
%!error <p, t\] = pistonpulse> pistonpulse (points, one, c)
%!error <points must be> pistonpulse (ones (2, 3), one, c, burst)
%!error <x, y and z must be non-empty> pistonpulse ({1, 2}, one, c, burst)
%!error <array.weights must be real> pistonpulse (points, setfield (one, "weights", 1i), c, burst)
%!error <array.delays must be> pistonpulse (points, setfield (one, "delays", [1, 2]), c, burst)
%!error <array.delays must be> pistonpulse (points, setfield (one, "delays", NaN), c, burst)
%!error <array has an unknown field: delay. The fields are l, s, positions, rotations, weights, delays, steer and focus.> pistonpulse (points, setfield (one, "delay", 1), c, burst)
%!error <array needs the field s> pistonpulse (points, rmfield (one, "s"), c, burst)
%!error <medium must be the speed> pistonpulse (points, one, "c", burst)
%!error <medium must be the speed> pistonpulse (points, one, struct (), burst)
%!error <medium has an unknown field: loss> pistonpulse (points, one, struct ("speed", c, "loss", 1), burst)
%!error <medium: speed must be a finite> pistonpulse (points, one, [c, c], burst)
%!error <medium: attenuation must be a finite> pistonpulse (points, one, struct ("speed", c, "attenuation", "1"), burst)
%!error pistonpulse (points, one, 0, burst)
%!error pistonpulse (points, one, struct ("speed", c, "attenuation", -1), burst)
%!error <excitation must be a struct> pistonpulse (points, one, c, [1, 2])
%!error <excitation must be a struct> pistonpulse (points, one, c, struct ("samples", 1))
%!error <excitation has an unknown field: begin> pistonpulse (points, one, c, setfield (burst, "begin", 1))
%!error <excitation: samples must be> pistonpulse (points, one, c, setfield (burst, "samples", []))
%!error <excitation: samples must be> pistonpulse (points, one, c, setfield (burst, "samples", 1i))
%!error <samples of the excitation> pistonpulse (points, one, c, setfield (burst, "samples", [0, NaN, 0]))
%!error <excitation: rate must be> pistonpulse (points, one, c, setfield (burst, "rate", "1"))
%!error <rate of the excitation> pistonpulse (points, one, c, setfield (burst, "rate", 0))
%!error <rate must be positive> pistonpulse (points, one, c, burst, "rate", -1)
%!error <times must be one or more> pistonpulse (points, one, c, burst, "times", [0, 1, 1.5])
%!error <times must be one or more> pistonpulse (points, one, c, burst, "times", [1, 0])
%!error <times must be one or more> pistonpulse (points, one, c, burst, "times", NaN)
%!error <times must be one or more> pistonpulse (points, one, c, burst, "times", "1")
%!error <Pass a rate or times, not both> pistonpulse (points, one, c, burst, "times", 1, "rate", 1)
%!error <After excitation, only these are allowed: 'quiet', and each with its value: rate, times, tolerance.> pistonpulse (points, one, c, burst, 3)
%!error <After excitation> pistonpulse (points, one, c, burst, "rate")
%!error <tolerance must be a finite real number> pistonpulse (points, one, c, burst, "tolerance", "1")
%!error <tolerance of a pulse must be from 1e-6> pistonpulse (points, one, c, burst, "tolerance", 1)
%!demo
%! array = pistonlinear (64, 0.3e-3, 5e-3, 0.27e-3);
%! array.focus = [0; 0; 30e-3];
%! excitation = pistonburst (5e6, 2, 100e6);
%! [p, t] = pistonpulse ([0; 0; 30e-3], array, 1540, excitation);
%! plot (t * 1e6, p);
%! xlabel ('t in \mus');
