% PISTONECHO  What pistons receive from point scatterers against time, for a pulse.
%
%   [e, t] = pistonecho (points, array, medium, excitation)
%   [e, t] = pistonecho ({x, y, z}, array, medium, excitation)
%   [e, t] = pistonecho (..., 'receive', receivers)
%   [e, t] = pistonecho (..., 'rate', rate)
%   [e, t] = pistonecho (..., 'times', times)
%   [e, t] = pistonecho (..., 'tolerance', tolerance)
%   [e, t] = pistonecho (..., 'quiet')
%   [e, t, used] = pistonecho (...)
%
% With the spectrum V of the excitation, and the pressures P that pistonarray gives for the
% pistons that transmit and for those that receive, with weights * exp (-i w delays), the echo of
% a scatterer is
%
%   e(t) = 1 / (2 pi) * integral of  V(w) * i P_transmit(w) * i P_receive(w) * exp (i w t)  dw
%
% It is what the scatterer would radiate to the receivers if these transmitted the pressure at the
% scatterer.  The receivers add what arrives, by their weights, each later by its delay.
% Scatterers do not reach each other: a signal of many is the sum of their echoes times their
% strengths.  A scatterer that turns a pressure p into waves S p exp (-i K R) / R adds F to the
% sum of weights * integral of the pressure over the receivers, with dF/dt = 2 pi c S rho c e.
%
% Arguments (in metres and seconds; if nothing is attenuated, any units)
%
%   points      the scatterers: 3 x N real double, one per column.  In a medium that attenuates,
%               none may be straight behind a piston.
%   x, y, z     instead of points, the axes of a grid: real vectors of one or more values.
%   array       the pistons that transmit, as for pistonpulse: with real weights, delays, steer
%               and focus.
%   medium      the speed of sound, or a struct, as for pistonpulse.
%   excitation  the velocity, as for pistonpulse.
%   receivers   the pistons that receive, a struct of the same form.  Default: array, so that
%               steer and focus hold for both directions.
%   rate        how many times per second the result has.  Default: that of the excitation.
%   times       the times of the result: one or more, evenly spaced, ascending.  Default: from
%               the first wave of any scatterer to the last, at the speed of the medium.
%   tolerance   largest error of e, relative to the peak of |e| of the scatterers of this call at
%               any time: from 1e-6 to below 1.  Default: 1e-4.
%   'quiet'     suppresses the progress bar, which appears if the work takes more than
%               half a second.
%
% Result
%
%   e           numel (t) x N real double, or numel (t) by numel (x) by numel (y) by numel (z);
%               NaN for scatterers with a coordinate that is infinite or NaN.
%   t           the times, a column.  With steer and focus, the echo of the focus comes at
%               2 * |focus| / c.
%   used        a struct that describes the computation, as that of pistonpulse (an echo is
%               always a sum of frequencies), and
%     receivedelays  the delays of the receivers, including those of steering and focusing.
%
% Example: the echo of a point in the focus of 64 elements
%
%   array = pistonlinear (64, 0.3e-3, 5e-3, 0.27e-3);
%   array.focus = [0; 0; 30e-3];
%   excitation = pistongauss (5e6, 0.6, 100e6);
%   [e, t] = pistonecho ([0; 0; 30e-3], array, 1540, excitation);
%   plot (t * 1e6, e);
%   xlabel ('t in \mus');
%
% Errors: those of pistonpulse.
%
% See also: pistonpulse, pistonburst, pistongauss, pistonarray.

function [e, t, used] = pistonecho (points, array, medium, excitation, varargin)

  if (nargin < 4)
    error ('pistonecho:arguments', ...
           'Too few arguments. Call it as [e, t] = pistonecho (points, array, medium, excitation).');
  end
  points = readpoints ('pistonecho', points);
  medium = readmedium ('pistonecho', medium);
  excitation = readexcitation ('pistonecho', excitation);
  options = readpulseoptions ('pistonecho', varargin, {'receive'});
  transmit = readdelayed ('pistonecho', array, medium(1));
  receive = transmit;
  if (~ isequal (options.receive, []))
    receive = readdelayed ('pistonecho', options.receive, medium(1));
  end
  [e, t, used] = againsttime ('pistonecho', 'echo', points, {transmit, receive}, medium, excitation, options);
  used.delays = transmit.delays;
  used.receivedelays = receive.delays;

end

%!function X = at_frequency (x, t, f)       # the Fourier transform
%!  X = exp (-2i * pi * f * t(:).') * x * (t(2) - t(1));
%!endfunction

%!shared c, f, row, other, burst, points
%! c = 1500;
%! f = 1e6;
%! row = struct ("l", 6e-3, "s", 0.7e-3, "positions", [((1:8) - 4.5) * 0.75e-3; zeros(2, 8)], "weights", [1, 2, 3, -1, 1, 1, 0, 0.5]);
%! other = struct ("l", 4e-3, "s", 3e-3, "positions", [10e-3; 0; 2e-3], "delays", 1e-6);
%! burst = pistonburst (f, 2, 40 * f);
%! points = [-6e-3, 0, 1e-3, 4e-3; 0, 2e-3, -3e-3, 1e-3; 5e-3, 6e-3, 20e-3, 60e-3];
%!test # at each frequency, the pressures of pistonarray there and back
%! te = (0:numel (burst.samples) - 1) / burst.rate;
%! for loss = [0, 1]
%!   medium = struct ("speed", c, "attenuation", loss);
%!   t = (-400:6000) / burst.rate;
%!   [e, ~, used] = pistonecho (points, row, medium, burst, "receive", other, "times", t);
%!   assert (used.frequencies > 0);
%!   assert ({used.delays, used.receivedelays}, {zeros(8, 1), 1e-6});
%!   for g = [0.6, 1, 1.3] * f
%!     k = 2 * pi * g / c - 1i * pistonattenuation (loss, g);
%!     there = pistonarray (points, row, k, "tolerance", 1e-8);
%!     back = pistonarray (points, rmfield (other, "delays"), k, "tolerance", 1e-8) * exp (-2i * pi * g * 1e-6);
%!     expected = -at_frequency (burst.samples, te, g) * there .* back;
%!     assert (max (abs (at_frequency (e, t, g).' - expected)) < 1e-3 * max (abs (expected)));
%!   endfor
%! endfor
%!test # both directions may be exchanged; by default they have the same array
%! [e, t] = pistonecho (points, row, c, burst, "receive", other);
%! peak = max (abs (e(:)));
%! assert (pistonecho (points, other, c, burst, "receive", row, "times", t), e, 3e-4 * peak);
%! [e, t] = pistonecho (points, row, c, burst);
%! assert (pistonecho (points, row, c, burst, "receive", row), e);
%!test # the echo of the focus comes at twice its distance
%! even = setfield (rmfield (row, "weights"), "focus", [6e-3; 0; 20e-3]);
%! pulse = pistongauss (f, 0.6, 40 * f);
%! [e, t, used] = pistonecho (even.focus, even, c, pulse);
%! assert (used.receivedelays, used.delays);
%! envelope = abs (ifft (fft (e, 4096) .* [1; 2 * ones(2047, 1); zeros(2048, 1)]));
%! [~, top] = max (envelope(1:numel (e)));
%! assert (t(top) * c / 2, norm (even.focus), 0.2 * c / f);
%!test # a grid has the echoes of its points; options as for pistonpulse
%! axes_ = {[-1e-3, 2e-3], 0, [8e-3, 9e-3, 12e-3]};
%! [X, Y, Z] = ndgrid (axes_{:});
%! [e, t] = pistonecho (axes_, other, c, burst, "rate", 20 * f, "quiet");
%! assert (size (e), [numel(t), 2, 1, 3]);
%! assert (1 / (t(2) - t(1)), 20 * f, -1e-9);
%! assert (e(:,:), pistonecho ([X(:)'; Y(:)'; Z(:)'], other, c, burst, "times", t), 2e-4 * max (abs (e(:))));
%! e = pistonecho ([0, NaN; 0, 0; 1e-2, 1e-2], other, c, burst);
%! assert (isnan (e(1,:)), [false, true]);
%!error <e, t\] = pistonecho> pistonecho (points, row, c)
%!error <array needs the field> pistonecho (points, row, c, burst, "receive", struct ())
%!error <array must be a scalar struct> pistonecho (points, row, c, burst, "receive", 3)
%!error <After excitation, only these are allowed: 'quiet', and each with its value: rate, receive, times, tolerance> pistonecho (points, row, c, burst, "receive")
%!error <medium must be> pistonecho (points, row, "c", burst)
%!error <excitation must be> pistonecho (points, row, c, 1)
%!error id=pistonecho:both pistonecho (points, row, c, burst, "times", 1, "rate", 1)
%!demo
%! array = pistonlinear (64, 0.3e-3, 5e-3, 0.27e-3);
%! array.focus = [0; 0; 30e-3];
%! excitation = pistongauss (5e6, 0.6, 100e6);
%! [e, t] = pistonecho ([0; 0; 30e-3], array, 1540, excitation);
%! plot (t * 1e6, e);
%! xlabel ('t in \mus');
