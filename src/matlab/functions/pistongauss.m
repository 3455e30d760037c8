% PISTONGAUSS  A cosine under a Gaussian, as the velocity of a pulse.
%
%   excitation = pistongauss (f, bandwidth, rate)
%
% Returns the excitation that pistonpulse and pistonecho take:
%
%   v(t) = cos (2 pi f t) * exp (-(pi f t bandwidth) ^ 2 / (4 log (2))),  -T <= t <= T
%
% Its spectrum has dropped by 6 dB at f * (1 - bandwidth / 2) and f * (1 + bandwidth / 2).  At T
% the Gaussian has dropped by 100 dB.  The middle of the pulse is at the time 0.  Beyond a bandwidth
% of 1, negative frequencies reach into the band, and the lower edge drops less: 4 dB at 1.5.
%
% Arguments
%
%   f           centre frequency, positive.
%   bandwidth   at -6 dB, as a part of f: from 0.01 to 2.  0.6 is 60 %, common for imaging.
%   rate        samples per unit of time, from 8 * f to 1e4 * f.  20 * f or more is common.
%
% Result
%
%   excitation  a struct: samples, a column of values of v; rate; and start, the time of the
%               first sample.
%
% Example: 5 MHz with a bandwidth of 60 %
%
%   excitation = pistongauss (5e6, 0.6, 100e6);
%   t = excitation.start + (0:numel (excitation.samples) - 1) / excitation.rate;
%   plot (t * 1e6, excitation.samples);
%   xlabel ('t in \mus');
%
% Errors: "f must be ...", "bandwidth must be ..." and "rate must be ...".
%
% See also: pistonburst, pistonpulse, pistonecho.

function excitation = pistongauss (f, bandwidth, rate)

  if (nargin < 3)
    error ('pistongauss:arguments', ...
           'Too few arguments. Call it as excitation = pistongauss (f, bandwidth, rate).');
  end
  excitation = fromlibrary ('pistongauss', 'gauss', f, bandwidth, rate);

end

%!test # a cosine under a Gaussian, until it has dropped by 100 dB
%! for b = [0.05, 0.6, 2]
%!   e = pistongauss (3, b, 120);
%!   assert (fieldnames (e), {"samples"; "rate"; "start"});
%!   t = e.start + (0:numel (e.samples) - 1)' / e.rate;
%!   assert (t(1), -t(end), 1e-12);
%!   v = cos (2 * pi * 3 * t) .* exp (-(pi * 3 * b * t) .^ 2 / (4 * log (2)));
%!   assert (e.samples, v, 1e-12);
%!   T = sqrt (log (1e5) * 4 * log (2)) / (pi * 3 * b);
%!   assert (t(end), T, 1.01 / 120);
%! endfor
%!test # the spectrum has dropped by 6 dB at the edges of the band
%! e = pistongauss (5e6, 0.6, 200e6);
%! t = e.start + (0:numel (e.samples) - 1) / e.rate;
%! V = @(f) abs (exp (-2i * pi * f * t) * e.samples);
%! assert (20 * log10 ([V(3.5e6), V(6.5e6)] / V(5e6)), [-6.02, -6.02], 0.01);
%!error <excitation = pistongauss> pistongauss (1, 0.5)
%!error <f must be> pistongauss (0, 0.5, 10)
%!error <f must be> pistongauss (NaN, 0.5, 10)
%!error <bandwidth must be> pistongauss (1, 0.009, 10)
%!error <bandwidth must be> pistongauss (1, 2.1, 10)
%!error <rate must be> pistongauss (1, 0.5, 7.9)
%!error id=pistongauss:bandwidth pistongauss (1, "a", 10)
%!demo
%! excitation = pistongauss (5e6, 0.6, 100e6);
%! t = excitation.start + (0:numel (excitation.samples) - 1) / excitation.rate;
%! plot (t * 1e6, excitation.samples);
%! xlabel ('t in \mus');
