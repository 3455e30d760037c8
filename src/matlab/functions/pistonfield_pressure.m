% PISTONFIELD_PRESSURE  What the other functions compute with the library.
%
%   [p, used] = pistonfield_pressure (where, pistons, k, accuracy, bar)
%
% For pistongrid and pistonarray, which check their arguments: the pressure of pistons, with
% an error below a tolerance, or of an order.
%
%   where      3 x N real double, or the axes {x, y, z} of a grid.
%   pistons    a struct of double arrays for M pistons: widths, heights and weights (M
%              numbers), centres (3 x M) and axes (3 x 3 x M), whose columns are the
%              directions of a piston's own x, y and z.
%   k          wave number, real or complex.
%   accuracy   below 1, the largest error of p, relative to its peak; from 1 on, the order
%              of all integrals.
%   bar        [], or a function for a progress bar, called as shown = bar (part,
%              seconds, shown): the part of the work that is done, how long it took, and
%              what the last call returned (0 in the first one), to be replaced.
%   p          N x 1, or of the shape of the grid.
%   used       a struct, as pistongrid returns it.
%
%   array = pistonfield_pressure ('linear', count, pitch, width, height)
%   array = pistonfield_pressure ('matrix', counts, pitches, width, height)
%   array = pistonfield_pressure ('convex', count, pitch, radius, width, height)
%   weights = pistonfield_pressure ('apodization', name, counts)
%   weights = pistonfield_pressure ('apodization', name, counts, parameter)
%   weights = pistonfield_pressure ('steered', positions, weights, direction, k)
%   weights = pistonfield_pressure ('focused', positions, weights, focus, k)
%
% For pistonlinear, pistonmatrix, pistonconvex, pistonapodization and pistonarray: the
% functions of <pistonfield/arrays.h>, with double arguments.  The width and the height are
% s and l.
%
%   strips = pistonfield_pressure ('lensed', pistons, focus, k, tolerance)
%
% For pistonlens: the function of <pistonfield/lens.h>, with structs as for a pressure.
%
%   [p, t, used] = pistonfield_pressure ('pulse', points, pistons, medium, excitation, rate, ...
%                                        times, tolerance, bar)
%   [e, t, used] = pistonfield_pressure ('echo', points, transmitting, receiving, medium, ...
%                                        excitation, rate, times, tolerance, bar)
%   excitation = pistonfield_pressure ('burst', frequency, cycles, rate, window)
%   excitation = pistonfield_pressure ('gauss', frequency, bandwidth, rate)
%   delays = pistonfield_pressure ('steereddelays', positions, delays, direction, speed)
%   delays = pistonfield_pressure ('focuseddelays', positions, delays, focus, speed)
%
% For pistonpulse, pistonecho, pistonburst and pistongauss: the library's <pistonfield/pulse.h> and
% <pistonfield/echo.h>.  Pistons have the further field delays; medium is speed, attenuation,
% exponent and reference; times is a column, or empty for those of all waves, at the rate.
%
%   numbers = pistonfield_pressure ('beams', x, p, drop)
%
% For pistonbeam: the beams of <pistonfield/beam.h> in the columns of a matrix.  Each is a
% column of peak, position, width, left and right edge.

function varargout = pistonfield_pressure (varargin)

  pistonfield ();  % runs only if the compiled module is missing; raises that error

end
