% PISTONINTENSITY  Intensity of a plane wave with a pressure amplitude.
%
%   I = pistonintensity (P, rho, c)
%
% Averages over time:
%
%   I = abs (P) ^ 2 / (2 * rho * c)
%
% This holds where the wave is nearly plane, as in a beam and in the far field.  Next to the
% piston, and in a tight focus, pressure and velocity differ in phase or in direction.
%
% Arguments
%
%   P           amplitudes of the pressure in Pa, as pistonpascals returns them: an array of
%               any shape.
%   rho         density of the medium in kg/m^3, positive.
%   c           speed of sound in m/s, positive.  In a lossy medium it is
%               2 * pi * f / real (k).
%
% Result
%
%   I           in W/m^2: double, of the shape of P.  10 W/m^2 are 1 mW/cm^2.
%
% Example
%
%   p = pistongrid (0, 0, 30e-3, 11e-3, 7.5e-3, 2 * pi / 1.5e-3);
%   I = pistonintensity (pistonpascals (p, 0.05, 1000, 1500), 1000, 1500);
%
% Errors: "P must be numbers.", "rho must be ..." and "c must be ..."
%
% See also: pistonpascals.

function I = pistonintensity (P, rho, c)

  if (nargin < 3)
    error ('pistonintensity:arguments', 'Too few arguments. Call it as I = pistonintensity (P, rho, c).');
  end
  if (~ isnumeric (P))
    error ('pistonintensity:P', 'P must be numbers.');
  end
  rho = readpositive ('pistonintensity', 'rho', rho);
  c = readpositive ('pistonintensity', 'c', c);
  P = full (double (P));
  I = (real (P) .^ 2 + imag (P) .^ 2) / (2 * rho * c);

end

%!test # rho c v ^ 2 / 2 of a plane wave
%! P = pistonpascals (exp (1i * (0:5)), 0.05, 1000, 1500);
%! assert (pistonintensity (P, 1000, 1500), 1000 * 1500 * 0.05 ^ 2 / 2 * ones (1, 6), -1e-14);
%! assert (pistonintensity (3 + 4i, 2, 1), 6.25);
%!test # in the far field, the intensity through the half space in front of a small piston is the power rho c (k l s v) ^ 2 / (4 pi)
%! k = 0.05;
%! theta = (0.5:200) / 200 * pi / 2;
%! p = pistonarray (1000 * [sin(theta); zeros(1, 200); cos(theta)], struct ("l", 1, "s", 1, "positions", [0; 0; 0]), k);
%! I = pistonintensity (pistonpascals (p, 2, 3, 5), 3, 5);
%! power = sum (I(:)' .* sin (theta)) * pi / 400 * 2 * pi * 1000 ^ 2;
%! assert (power, 3 * 5 * (k * 2) ^ 2 / (4 * pi), -1e-3);
%!test # the number of C++ and Python
%! assert (pistonintensity (3.3 + 4.1i, 998.7, 1481.3), 9.3620660480443237e-06, -4e-16);
%!test # shapes and classes
%! assert (size (pistonintensity (ones (2, 3, 4), 1, 1)), [2, 3, 4]);
%! assert (class (pistonintensity (single (1), single (1), int8 (1))), "double");
%! assert (isnan (pistonintensity ([NaN, 1], 1, 1)), [true, false]);
%!error <Call it as I = pistonintensity> pistonintensity (1, 1)
%!error <P must be numbers> pistonintensity ({1}, 1, 1)
%!error <rho must be positive> pistonintensity (1, 0, 1)
%!error <c must be positive> pistonintensity (1, 1, -1)
%!error <c must be a finite real number> pistonintensity (1, 1, 1 + 1i)
