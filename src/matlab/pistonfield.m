% PISTONFIELD  Complex acoustic pressure of a flat rectangular piston at points.
%
%   p = pistonfield (points, ignored, l, s, k)
%   p = pistonfield (points, ignored, l, s, k, mode)
%   p = pistonfield (points, ignored, l, s, k, mode, nabscissas)
%   pistonfield ('info')
%
% The piston lies in the plane z = 0, centred on the origin: side s along x, side
% l along y.  It moves as one, with exp(+i w t), into a half-space of fluid.  The
% result is, for z >= 0,
%
%         k     /  exp (-i k R)
%   p = -----  |  -------------- dS         R: from the point to dS, on the piston
%       2 pi   /         R
%
% evaluated by the fast near-field method: four single integrals, one an edge, by
% Gauss-Legendre quadrature in single precision on the device.  The magnitude is
% that of a plane wave in front of an endless piston, 1; i*rho*c*v*p is the
% pressure in pascals of a piston of velocity amplitude v (m/s).
%
% Arguments (all lengths, and 1/k, in one unit; for small pistons millimetres or
% wavelengths rather than metres, see Limits)
%
%   points      3 x N real double, a point a column: x, y, z.  1 <= N < 2^31.
%   ignored     anything; not read.
%   l, s        sides of the piston along y and along x, full lengths.
%   k           wave number, 2 pi / wavelength.
%   mode        'cuda' (as when left out) or 'cudadp', which is the same.  The
%               modes 'cpu', 'cpusp' and 'cpudp' end with an error.
%   nabscissas  order of the quadrature rule, 1 ... 512 (10 when left out, which
%               is too few for sides of some 7 wavelengths: see pistonorder; a
%               fraction is cut off), or a table of M rows and 2 columns, M the
%               order.  CAUTION: a table is NOT READ AS [x, w], which gives wrong
%               numbers without a word: pistonrule (x, w) PACKS THE TABLE.  Its
%               values are taken as stored, column by column, in pairs: abscissa,
%               weight, abscissa, weight ... of the non-positive half of the
%               rule, from the most negative upward, (M+1)/2 pairs rounded down.
%               The rest of the table is not read.
%
% Result
%
%   p           N x 1 complex double, with the digits of single precision: for
%               z >= 0 rounding of at most 5e-7 (1 + |k| R), R to the farthest
%               corner, mostly a tenth of it, and the error of the rule, which
%               a higher order makes smaller.  NaN, or 0 far beside, where a
%               coordinate is infinite or not a number.
%
% Limits
%
%   Points beside x = 0 or y = 0 by less than 1e-7, in the unit of the lengths, and
%   between the planes of the edges are off by up to some 2e-7 / side.
%   The squares of lengths beyond 1e18, and of sides below 1e-18, leave the range of
%   single precision: p is then 0, NaN or wrong, without an error.
%
% The values of l, s and k are printed; progress lines go to the standard output
% of the process.  pistonfield ('info') prints when and from what the module was
% built.  Ctrl-C ends a long call.
%
% Example: the pressure on the axis of a piston of 1 MHz in water
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
%       There were fewer than five or more than seven.
%   Must have one output arguments
%       Write p = pistonfield (...).
%   Input must be real, full, and nonstring
%       points is not a full real matrix of doubles.
%   abscissas must be a number or a 2D matrix containing abscissas and weights.
%       nabscissas is neither a scalar nor a full double matrix of two columns.
%   l (argument 3) must be a number.
%       So for s (argument 4) and k (argument 5).
%   Points (argument 1) must have dimension of three.
%       points does not have three rows.
%   Points (argument 1) must be at most 2147483647.
%   The given grid must have at least one data point
%       points has no columns.
%   Input 5 must be a character string and either be 'cuda' or 'cpu'
%   Input 5 must either be 'cuda' or 'cpu[sp,dp]'
%       mode, the argument that is number 5 when counted from 0.
%   CPU version not implemented, yet.
%       mode was 'cpu', 'cpusp' or 'cpudp'.
%   There is not enough memory for this many points.
%   ERROR: assertion failure in <file> at line <n>
%          condition failed: (<condition>).
%       (order>0)              the order is below 1, or not a number.
%       (N <= 512 && N>0)      the order is above 512, or the table's rows are
%                              not 1 ... 512.
%       (Cuda error when calling <call>: <reason>), or a reason alone: what the
%       CUDA runtime says, for example "out of memory", "no CUDA-capable device
%       is detected", "CUDA driver version is insufficient for CUDA runtime
%       version".  The module was built for a GPU that this machine cannot use;
%       build it for the emulation device instead.
%   pistonfield is not built
%       The compiled module is missing beside this file.
%
% See also: pistongrid (fields on grids), pistonarray (many pistons), pistonplot
% (pictures), pistonrule (tables), pistonorder (the order for a tolerance),
% pistoninfo (what this runs on).

function p = pistonfield (varargin)

  error ('pistonfield:notBuilt', ...
         ['pistonfield is not built: there is no pistonfield.%s in\n%s\n' ...
          'Build it with scripts/demo, or as the README says.'], ...
         mexext (), fileparts (mfilename ('fullpath')));

end

%!test # the integral itself, on the axis and over an edge
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
