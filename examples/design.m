% A design loop: finds the smallest square piston with a narrow enough beam at a depth: design.png
%
% Goal: at a depth of 100 mm the beam is at most 12 mm wide at half the pressure (-6 dB). In the far field
% the beam of a piston of side a is sinc (a sin (alpha) / lambda), 1.207 lambda z / a wide. A larger
% piston has a narrower beam, until the depth is no longer in the far field and the beam is as wide as the
% piston. Some goals cannot be met by any side.

lambda = 1500 / 1e6;                        % 1 MHz in water, in metres
k = 2 * pi / lambda;
depth = 100e-3;
goal = 12e-3;

x = linspace (-60e-3, 60e-3, 2401);
widthof = @(a) beamwidth (x, pistongrid (x, 0, depth, a, a, k));

% First try all sides in coarse steps.  Then bisect the interval in which the goal is first met, down to
% a manufacturing tolerance.
sides = (5:0.5:30) * 1e-3;
widths = arrayfun (widthof, sides);
first = find (widths <= goal, 1);
if (isempty (first))
  error ('design:goal', 'No piston of %g to %g mm meets the goal.', sides([1, end]) * 1e3);
end
toosmall = sides(first-1);
side = sides(first);
while (side - toosmall > 1e-5)
  middle = (side + toosmall) / 2;
  if (widthof (middle) <= goal)
    side = middle;
  else
    toosmall = middle;
  end
end
width = widthof (side);
sideexpected = 1.207 * lambda * depth / goal;
fprintf ('side %.2f mm: %.3f mm wide at %g mm; the far-field formula gives %.2f mm\n', ...
         side * 1e3, width * 1e3, depth * 1e3, sideexpected * 1e3);

picture = newpicture (900, 560);
plot (sides * 1e3, widths * 1e3, 'b', sides * 1e3, 1.207 * lambda * depth ./ sides * 1e3, 'r--', ...
      sides([1, end]) * 1e3, goal * [1, 1] * 1e3, 'k--', side * 1e3, width * 1e3, 'bo');
axis ([5, 30, 0, 40]);
xlabel ('side of the piston / mm');
ylabel ('width of the beam at -6 dB / mm');
title (sprintf ('Square piston, 1 MHz in water, at a depth of %g mm', depth * 1e3));
text (21.5, 24, 'beam width', 'color', 'b');
text (22, 5, 'far field, 1.207 \lambda z / a', 'color', 'r');
text (23, 13.2, sprintf ('goal, %g mm', goal * 1e3), 'color', 'k');
text (11.5, 18, sprintf ('smallest side, %.2f mm', side * 1e3), 'color', 'b');
savepicture (picture, 'design.png');
