% PISTONFIELD  Complex acoustic pressure of a flat rectangular piston at points.
%
%   p = pistonfield (points, ignored, l, s, k)
%   p = pistonfield (points, ignored, l, s, k, mode)
%   p = pistonfield (points, ignored, l, s, k, mode, nabscissas)
%   pistonfield ('info')
%
% The piston lies in the plane z = 0, centred on the origin, with side s along x and
% side l along y.  It moves as a whole, with exp(+i w t), into a half-space of fluid.
% For z >= 0 the result is
%
%         k     /  exp (-i k R)
%   p = -----  |  -------------- dS         R: from the point to dS, on the piston
%       2 pi   /         R
%
% The fast near-field method evaluates it as four single integrals, one per edge, by
% Gauss-Legendre quadrature in single precision on the device.  A plane wave in front
% of an infinitely large piston has magnitude 1.  The pressure in pascals of a piston
% with velocity amplitude v (m/s) is i*rho*c*v*p.
%
% Arguments (all lengths, and 1/k, in one unit; for small pistons use millimetres or
% wavelengths rather than metres, see Limits)
%
%   points      3 x N real double, one point per column: x, y, z.  1 <= N < 2^31.
%   ignored     anything; not read.
%   l, s        sides of the piston along y and along x, full lengths.
%   k           wave number, 2 pi / wavelength.
%   mode        'cuda' (the default) or 'cudadp', which gives the same result.  The
%               modes 'cpu', 'cpusp' and 'cpudp' end with an error.
%   nabscissas  order of the quadrature rule, 1 to 512 (a fraction is truncated), or
%               a table of M rows and 2 columns, where M is the order.  The default
%               order, 10, is too low for sides of some 7 wavelengths: see
%               pistonorder, or use pistongrid or pistonarray, which keep a
%               tolerance.
%               CAUTION: a table is NOT READ AS [x, w], which gives wrong numbers
%               without an error: pistonrule (x, w) PACKS THE TABLE.  The table is
%               read column by column, in pairs: abscissa, weight, abscissa, weight
%               ...  They are the non-positive half of the rule, from the most
%               negative abscissa upward: (M+1)/2 pairs, rounded down.  The rest of
%               the table is not read.
%
% Result
%
%   p           N x 1 complex double, with the digits of single precision.  For
%               z >= 0 the rounding error is at most 5e-7 (1 + |k| R), where R is the
%               distance to the farthest corner, and usually a tenth of that.  The
%               error of the rule adds to it; a higher order reduces it.  If a
%               coordinate is infinite or NaN, p is NaN, or 0 far to the side.
%
% Limits
%
%   A point between the planes of the edges and within 1e-7, in the unit of the
%   lengths, of the plane x = 0 or y = 0 has an error of up to some 2e-7 / side, unless
%   it lies exactly on that plane.
%   The squares of lengths beyond 1e18, and of sides below 1e-18, are out of range in
%   single precision: p is then 0, NaN or wrong, without an error.
%
% pistonfield prints l, s and k, and writes progress lines to the standard output of
% the process.  pistonfield ('info') prints the build date and the revision.  Ctrl-C
% ends a long call.
%
% Example: the pressure on the axis of a piston at 1 MHz in water
%
%   lambda = 1500 / 1e6;                      % m
%   z = linspace (lambda, 40 * lambda, 200);
%   points = [zeros(2, 200); z];
%   p = pistonfield (points, 0, 7.5 * lambda, 5 * lambda, 2 * pi / lambda);
%   plot (z, abs (p));
%
% Errors
%
%   Must have five or six input arguments: ([list of points], ignored, l, s, k,
%   ['cuda'|'cudadp'|'cpu'|'cpusp'|'cpudp'], [nabscissas])
%       Pass five, six or seven arguments.
%   Must have one output arguments
%       Write p = pistonfield (...).
%   Input must be real, full, and nonstring
%       points must be a full real double matrix.
%   abscissas must be a number or a 2D matrix containing abscissas and weights.
%       nabscissas must be a scalar or a full double matrix with two columns.
%   l (argument 3) must be a number.
%       The same for s (argument 4) and k (argument 5).
%   Points (argument 1) must have dimension of three.
%       points must have three rows.
%   Points (argument 1) must have at most 2147483647 columns.
%   The given grid must have at least one data point
%       points must have at least one column.
%   Input 5 must be a character string and either be 'cuda' or 'cpu'
%   Input 5 must either be 'cuda' or 'cpu[sp,dp]'
%       mode is wrong.  (The message counts arguments from 0.)
%   CPU version not implemented, yet.
%       mode is 'cpu', 'cpusp' or 'cpudp'.  Use 'cuda'.
%   There is not enough memory for this many points.
%   ERROR: assertion failure in <file> at line <n>
%          condition failed: (<condition>).
%       (order>0)              the order is below 1 or NaN.
%       (N <= 512 && N>0)      the order is above 512, or the table does not have 1
%                              to 512 rows.
%       (Cuda error when calling <call>: <reason>), or a reason alone: an error of the
%       CUDA runtime, for example "out of memory", "no CUDA-capable device is
%       detected", "CUDA driver version is insufficient for CUDA runtime version".
%       The last two mean that the module was built for a GPU that this machine
%       cannot use; build it for the emulation device instead.
%   pistonfield is not built
%       The compiled module is missing beside this file.
%
% See also: pistongrid (fields on grids), pistonarray (many pistons), pistonplot
% (pictures), pistonrule (tables), pistonorder (the order for a tolerance),
% pistoninfo (the device in use).

function p = pistonfield (varargin)

  error ('pistonfield:notBuilt', ...
         ['pistonfield is not built: there is no pistonfield.%s in\n%s\n' ...
          'Build it with scripts/demo, or as described in README.md.'], ...
         mexext (), fileparts (mfilename ('fullpath')));

end

%!test # the result equals the integral, on the axis and above an edge
%! points = [0, 0.0025; 0, 0.0025; 0.005, 0.005];
%! exact = [-1.4349405557124149 + 0.7410821519076099i; -0.5981275020931498 + 0.3537894630605613i];
%! p = pistonfield (points, 0, 0.01, 0.005, 4188.79, "cuda", 64);
%! kR = 4188.79 * sqrt ((points(1,:) + 0.0025) .^ 2 + (points(2,:) + 0.005) .^ 2 + points(3,:) .^ 2);
%! assert (all (abs (p - exact).' <= 3 * 2^-24 * (1 + kR)));
%!error <Points .argument 1. must have dimension of three> p = pistonfield (ones (2, 4), 0, 1, 1, 1)
%!demo
%! lambda = 1500 / 1e6;
%! z = linspace (lambda, 40 * lambda, 200);
%! p = pistonfield ([zeros(2, 200); z], 0, 7.5 * lambda, 5 * lambda, 2 * pi / lambda);
%! plot (z * 1e3, abs (p));
%! xlabel ("z / mm");
%! ylabel ("|p|, plane wave = 1");
