% A pulse of a square piston at four times, and on its axis against time: pulse.png
%
% In front of the piston a plane wave of its velocity, v (t - z / c), follows its sides.  Where it ends, at
% the edges, other waves begin.  They reach the axis at sqrt (z^2 + (a/2)^2) / c from the sides, all four at
% once, and end with the wave from the corners, at sqrt (z^2 + a^2 / 2) / c.  In between the pressure on the
% axis is exactly that of the plane wave.

c = 1500;                                   % water, in m/s
frequency = 1e6;                            % Hz
a = 15e-3;                                  % 10 wavelengths
piston = struct ('l', a, 's', a, 'positions', [0; 0; 0]);
excitation = pistonburst (frequency, 2, 40 * frequency);
duration = 2 / frequency;

% The plane y = 0 at the times at which the front is at these distances.
fronts = (8:8:32) * 1e-3;
x = linspace (-18e-3, 18e-3, 145);
z = linspace (0.25e-3, 36e-3, 144);
p = pistonpulse ({x, 0, z}, piston, c, excitation, 'times', fronts / c, 'quiet');

% On the axis at one distance, where the waves of the edges come when the plane wave has passed.
distance = 12e-3;
arrivals = sqrt (distance ^ 2 + [0, a ^ 2 / 4, a ^ 2 / 2]) / c;
[axial, t] = pistonpulse ([0; 0; distance], piston, c, excitation, 'rate', 200 * frequency, 'tolerance', 1e-6);
since = frequency * (t - arrivals(1));
plane = (since > 0 & since < 2) .* sin (2 * pi * since) .* sin (pi * since / 2) .^ 2;
others = abs (axial - plane) > 1e-3;
seen = [t(find (others, 1)), t(find (others, 1, 'last'))];
before = t < arrivals(2);
largest = max (abs (axial(before) - plane(before)));
fprintf ('before the waves of the edges, the pressure differs from v (t - z / c) by at most %.1g\n', largest);
fprintf ('the waves of the edges are seen from %.2f to %.2f us; expected from %.2f to %.2f us\n', ...
         seen * 1e6, [arrivals(2), arrivals(3) + duration] * 1e6);

picture = newpicture (760, 860);
shades = linspace (0, 1, 32)';
colormap ([shades, shades, ones(32, 1); 1, 1, 1; ones(32, 1), flipud(shades), flipud(shades)]);
for n = 1:4
  column = mod (n - 1, 2);
  row = floor ((n - 1) / 2);
  subplot ('position', [0.10 + 0.42 * column, 0.725 - 0.305 * row, 0.36, 0.22]);
  imagesc (z * 1e3, x * 1e3, squeeze (p(n,:,1,:)), [-0.5, 0.5]);
  hold ('on');
  plot ([0, 0], [-a, a] / 2 * 1e3, 'k', 'linewidth', 4);
  plot (fronts(n) * [1, 1] * 1e3, [-12, 12], 'k:');
  axis ('xy');
  axis ([-0.5, 36, -18, 18]);
  title (sprintf ('t = %.1f \\mus; dotted: z = ct', fronts(n) / c * 1e6));
  if (row == 1)
    xlabel ('z / mm');
  end
  if (column == 0)
    ylabel ('x / mm');
  end
end
subplot ('position', [0.91, 0.42, 0.02, 0.525]);
levels = linspace (-0.5, 0.5, 64);
imagesc ([0, 1], levels, [levels; levels]', [-0.5, 0.5]);
axis ('xy');
set (gca, 'xtick', [], 'yaxislocation', 'right');
title ('p');

subplot ('position', [0.12, 0.07, 0.81, 0.22]);
plot (t * 1e6, plane, 'r', t * 1e6, axial, 'b--');
axis ([7.5, 13, -1.2, 1.2]);
hold ('on');
names = {'plane wave', 'sides', 'corners'};
for n = 1:3
  plot (arrivals(n) * [1, 1] * 1e6, [-1.2, 1.2], 'k:');
  text (arrivals(n) * 1e6 + 0.05, -1, names{n});
end
xlabel ('t / \mus');
ylabel ('p, plane wave = 1');
title (sprintf ('On the axis at %g mm: blue, and v (t - z / c): red', distance * 1e3));
savepicture (picture, 'pulse.png');
