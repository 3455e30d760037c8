% A phased array of 64 elements, steered and focused: phasedarray.png
%
% The elements are half a wavelength apart, so that there is no second main beam.  The steered beam
% leaves at the given angle.  Seen from a focus at the distance R in the direction theta, the array has the
% aperture D cos (theta).  Its beam pattern is sinc (D cos (theta) sin (alpha) / lambda).  The first zero is
% at lambda R / (D cos (theta)) from the focus, and the full width at half the pressure is 1.207 times that.

frequency = 2e6;                            % Hz
lambda = 1500 / frequency;                  % in water, in metres
k = 2 * pi / lambda;
elements = 64;
pitch = lambda / 2;
aperture = elements * pitch;

array.l = 6e-3;                             % along y
array.s = 0.9 * pitch;                      % along x
array.positions = [((1:elements) - (elements + 1) / 2) * pitch; zeros(2, elements)];

x = linspace (-15e-3, 30e-3, 151);
z = linspace (1e-3, 55e-3, 181);

picture = newpicture (620, 860);

% Steered: find the angle of the loudest point on a circle in the far field.
angle_ = 25;                                % degrees
steered = array;
steered.steer = [sind(angle_); 0; cosd(angle_)];
circle = -80:0.05:80;
p = pistonarray (20 * [sind(circle); zeros(size (circle)); cosd(circle)], steered, k);
[~, loudest] = max (abs (p));
fprintf ('steered to %g degrees; the beam is loudest at %.2f degrees\n', angle_, circle(loudest));
subplot ('position', [0.12, 0.57, 0.8, 0.38]);
pistonplot (x, 0, z, pistonarray ({x, 0, z}, steered, k, 'quiet'), 'dB');
hold ('on');
plot (55 * [0, cosd(angle_)], 55 * [0, sind(angle_)], 'r--', 'linewidth', 2);
title (sprintf ('64 elements, 2 MHz in water, steered to %g degrees', angle_));

% Focused: find the loudest point across the beam, and the width of the beam there.
focused = array;
focused.focus = [12e-3; 0; 40e-3];
R = norm (focused.focus);
theta = atan2 (focused.focus(1), focused.focus(3));
offset = (-4000:4000) * 1e-6;               % across the beam, in metres
across = focused.focus + [cos(theta); 0; -sin(theta)] * offset;
p = pistonarray (across, focused, k, 'quiet');
[~, loudest] = max (abs (p));
found = across(:,loudest);
width = beamwidth (offset, p);
widthexpected = 1.207 * lambda * R / (aperture * cos (theta));
fprintf ('focused at x = %.2f mm, z = %.2f mm; across the beam it is loudest at %.2f, %.2f mm\n', ...
         focused.focus([1, 3]) * 1e3, found([1, 3]) * 1e3);
fprintf ('width at -6 dB %.3f mm; expected %.3f mm\n', width * 1e3, widthexpected * 1e3);
subplot ('position', [0.12, 0.07, 0.8, 0.38]);
pistonplot (x, 0, z, pistonarray ({x, 0, z}, focused, k, 'quiet'), 'dB');
hold ('on');
plot (focused.focus(3) * 1e3, focused.focus(1) * 1e3, 'r+', 'markersize', 12, 'linewidth', 2);
title (sprintf ('Focused: %.2f mm wide at -6 dB, expected %.2f mm', width * 1e3, widthexpected * 1e3));
savepicture (picture, 'phasedarray.png');
