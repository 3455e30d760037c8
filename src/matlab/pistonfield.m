% PISTONFIELD  Complex acoustic pressure of a flat rectangular piston at a list of points.
function p = pistonfield (varargin)
  error ("x");
end
