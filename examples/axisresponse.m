% The impulse response of a piston on its axis, and its closed form: axisresponse.png
%
% The waves that arrive at the time t come from an arc: the part of the circle of the radius
% sqrt (c^2 t^2 - z^2) about the axis that lies on the piston.  With its angle W(t), the pressure is
%
%   p(t) = integral of v'(t - s) W(s) / 2 pi  ds
%
% so that after a step of the velocity it is W(t) / 2 pi: 1 until the circle meets the longer sides, less
% until it meets the shorter ones, and 0 beyond the corners.  The step here takes 50 ns.

c = 1500;                                   % water, in m/s
l = 12e-3;                                  % along y
s = 8e-3;                                   % along x
z = 10e-3;
tolerance = 1e-4;
piston = struct ('l', l, 's', s, 'positions', [0; 0; 0]);

% A velocity that rises smoothly, stays for longer than the response takes, and falls.
rise = 50e-9;
stays = 3e-6;
within = @(t) min (max (t / rise + 0.5, 0), 1);          % rises from -rise / 2 to rise / 2
step = @(t) within (t) - sin (2 * pi * within (t)) / (2 * pi);
velocity = @(t) step (t) - step (t - stays);
excitation.rate = 64 / rise;
excitation.start = -rise;
excitation.samples = velocity (excitation.start + (0:round ((stays + 2 * rise) * excitation.rate)) ...
                               / excitation.rate);

t = 6.4e-6 + (0:1050)' * 2e-9;
[p, ~, used] = pistonpulse ([0; 0; z], piston, c, excitation, 'times', t, 'tolerance', tolerance);

% The closed form for this step: the plane wave, less the arcs that are not on the piston, from 5000 steps.
radius = @(t) sqrt (max ((c * t) .^ 2 - z ^ 2, realmin));
outside = @(side, t) 2 / pi * acos (min (1, side / 2 ./ radius (t)));
lost = @(t) min (1, outside (s, t) + outside (l, t));
arc = @(t) (c * t > z) .* (1 - lost (t));
lags = ((0:5000)' / 5000 - 0.5) * rise;
exact = zeros (size (t));
for n = 1:numel (t)
  exact(n) = step (t(n) - z / c) - sum (diff (step (lags)) .* lost (t(n) - (lags(1:end-1) + lags(2:end)) / 2));
end
difference = p - exact;
fprintf ('largest difference from the closed form %.1e; tolerance %.0e\n', max (abs (difference)), tolerance);

arrivals = sqrt (z ^ 2 + [0, s, l, norm([s, l])] .^ 2 / 4) / c;
picture = newpicture (760, 460);
plot (t * 1e6, arc (t), 'r', t(1:10:end) * 1e6, p(1:10:end), 'b.');
axis ([6.4, 8.5, -0.05, 1.15]);
hold ('on');
names = {'plane wave', 'sides at s / 2', 'sides at l / 2', 'corners'};
for n = 1:4
  plot (arrivals(n) * [1, 1] * 1e6, [-0.05, 1.15], 'k:');
  text (arrivals(n) * 1e6 + 0.02, 1.08, names{n});
end
xlabel ('t / \mus');
ylabel ('p, plane wave = 1');
title (sprintf ('Step response of a piston of %g by %g mm, on the axis at %g mm', s * 1e3, l * 1e3, z * 1e3));
text (6.72, 0.30, 'line: arc of the circle / 2\pi', 'color', 'r');
text (6.72, 0.20, 'dots: pistonpulse, step of 50 ns', 'color', 'b');

savepicture (picture, 'axisresponse.png');
