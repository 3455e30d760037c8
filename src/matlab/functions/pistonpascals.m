% PISTONPASCALS  Pressure in pascals.
%
%   P = pistonpascals (p, v, rho, c)
%
% The plane wave in front of a large piston has magnitude 1 in the results of pistongrid,
% pistonarray and pistonfield.  In pascals the pressure is
%
%   P = 1i * rho * c * v * p
%
% (The pressure of a pulse against time has no factor 1i: multiply it by rho * c.)
%
% Arguments
%
%   p           pressures, an array of any shape.
%   v           amplitude of the piston's velocity in m/s.  It may be complex.  From an
%               amplitude A of its displacement, v = 2 * pi * f * A.
%   rho         density of the medium in kg/m^3, positive.
%   c           speed of sound in m/s, positive.  In a lossy medium it is 2 * pi * f / k,
%               which is complex.
%
% Result
%
%   P           in Pa: double, of the shape of p.
%
% Example: water, 5 cm/s
%
%   x = linspace (-10e-3, 10e-3, 201);
%   z = linspace (0.2e-3, 40e-3, 400);
%   p = pistongrid (x, 0, z, 11e-3, 7.5e-3, 2 * pi / 1.5e-3);
%   pistonplot (x, 0, z, pistonpascals (p, 0.05, 1000, 1500), 'dB', 'unit', 'Pa');
%
% Errors: "p must be numbers.", "v must be a finite number.", "rho must be ..." and "c must be a
% finite number with a positive real part."
%
% See also: pistonintensity, pistonattenuation, pistonplot.

function P = pistonpascals (p, v, rho, c)

  if (nargin < 4)
    error ('pistonpascals:arguments', 'Too few arguments. Call it as P = pistonpascals (p, v, rho, c).');
  end
  if (~ isnumeric (p))
    error ('pistonpascals:p', 'p must be numbers.');
  end
  if (~ isfinitenumber (v))
    error ('pistonpascals:v', 'v must be a finite number.');
  end
  rho = readpositive ('pistonpascals', 'rho', rho);
  if (~ isfinitenumber (c) || real (c) <= 0)
    error ('pistonpascals:c', 'c must be a finite number with a positive real part.');
  end
  P = 1i * (rho * full (double (c)) * full (double (v))) * full (double (p));

end

function yes = isfinitenumber (value)

  yes = isnumeric (value) && numel (value) == 1 && isfinite (value);

end

%!test # the wave in front of a large piston has p = -1i exp (-i k z), and is in phase with the velocity
%! assert (pistonpascals (-1i, 0.05, 1000, 1500), 75e3, 1e-9);
%! assert (pistonpascals (1, 0.05, 1000, 1500), 75e3 * 1i, 1e-9);
%!test # on the axis of the piston's middle the far field is rho c k |v| l s / (2 pi z)
%! p = pistongrid (0, 0, 30, 0.1, 0.2, 3);
%! assert (abs (pistonpascals (p, 2, 1000, 1500)), 1000 * 1500 * 2 * 3 * 0.1 * 0.2 / (2 * pi * 30), -1e-4);
%!test # with loss, c = 2 pi f / k, and P = 1i rho omega v / k p
%! f = 1e6;
%! k = 2 * pi * f / 1500 - 20i;
%! P = pistonpascals ([1i, 2], 0.1, 1000, 2 * pi * f / k);
%! assert (P, 1i * 1000 * 2 * pi * f * 0.1 / k * [1i, 2], 1e-9);
%!test # the number of C++ and Python
%! assert (pistonpascals (1.1 - 0.3i, 0.05, 998.7, 1481.3 - 2.5i), 22327.9359 + 81328.135800000018i, -4e-16);
%!test # shapes and classes
%! p = ones (2, 3, 4, "single");
%! assert (size (pistonpascals (p, 1, 1, 1)), [2, 3, 4]);
%! assert (class (pistonpascals (p, single (1), int8 (1), 1)), "double");
%! assert (pistonpascals (2, 1i, 3, 5), -30 + 0i);
%!error <Call it as P = pistonpascals> pistonpascals (1, 1, 1)
%!error <p must be numbers> pistonpascals ("1", 1, 1, 1)
%!error <v must be a finite number> pistonpascals (1, [1, 2], 1, 1)
%!error <v must be a finite number> pistonpascals (1, NaN, 1, 1)
%!error <rho must be a finite real number> pistonpascals (1, 1, 1i, 1)
%!error <rho must be positive> pistonpascals (1, 1, 0, 1)
%!error <c must be a finite number with a positive real part> pistonpascals (1, 1, 1, -1)
%!error <c must be a finite number with a positive real part> pistonpascals (1, 1, 1, [])
