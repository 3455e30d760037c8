% PISTONFIELD_PRESSURE  Pressure of pistons, with an error below a tolerance.
%
%   [p, used] = pistonfield_pressure (where, pistons, k, tolerance, bar)
%
% For pistongrid and pistonarray, which check their arguments.
%
%   where      3 x N real double, or the axes {x, y, z} of a grid.
%   pistons    a struct of double arrays for M pistons: widths, heights and weights (M
%              numbers), centres (3 x M) and axes (3 x 3 x M), whose columns are the
%              directions of a piston's own x, y and z.
%   tolerance  largest error of p, relative to its peak.
%   bar        [], or a function for a progress bar, called as shown = bar (part,
%              seconds, shown): the part of the work that is done, how long it took, and
%              what the last call returned (0 in the first one), to be replaced.
%   p          N x 1, or of the shape of the grid.
%   used       a struct, as pistongrid returns it.

function [p, used] = pistonfield_pressure (varargin)

  p = pistonfield ();  % runs only if the compiled module is missing; raises that error

end
