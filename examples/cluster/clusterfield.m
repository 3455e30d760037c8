% field = clusterfield ()
%
% Returns the description of the field that computepart and joinparts process. Change it here.

function field = clusterfield ()

  lambda = 1500 / 1e6;                      % 1 MHz in water, in metres
  field.x = (-60:60) * lambda / 8;          % axes of the grid of points
  field.y = (-60:60) * lambda / 8;
  field.z = (1:100) * lambda / 8;
  field.l = 7.5 * lambda;                   % sides of the piston along y and x
  field.s = 5 * lambda;
  field.k = 2 * pi / lambda;
  field.order = 20;                         % of the quadrature rule; see pistonorder

end
