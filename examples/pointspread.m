% What a point looks like in an ultrasound image: pointspread.png
%
% An array sends a pulse to a focus, and adds what its elements receive from there with the same delays.
% Points beside the focus send the weaker echoes that blur the image.  At one frequency, the aperture D with
% the focus F has the pattern sinc (D x / (lambda F)) on each way: half the maximum for both ways is 0.443
% lambda F / D beside the focus.  A pulse is compared with the sum of its frequencies, for which the elements
% are points that radiate as sinc (s sin (theta) / lambda).  Along the beam, it is blurred by its own length.

c = 1540;                                   % tissue, in m/s
frequency = 5e6;                            % Hz
bandwidth = 0.6;
focus = 30e-3;
array = pistonlinear (64, 0.3e-3, 2e-3, 0.27e-3);        % low, so that all of y is in phase
array.focus = [0; 0; focus];
excitation = pistongauss (frequency, bandwidth, 20 * frequency);
lambda = c / frequency;
aperture = 64 * 0.3e-3;

% The echo of the points of a line through the focus.
x = linspace (-2e-3, 2e-3, 161);
times = 2 * focus / c + (-150:150) / (20 * frequency);
echoes = reshape (pistonecho ({x, 0, focus}, array, c, excitation, 'times', times, 'quiet'), [], numel (x));

% The envelope: the magnitude of the echo without its negative frequencies.
M = numel (times);
keep = [1; 2 * ones((M - 1) / 2, 1); zeros((M - 1) / 2, 1)];
envelope = abs (ifft (fft (echoes) .* repmat (keep, 1, numel (x))));
depth = c / 2 * times;

across = envelope((M + 1) / 2,:);           % at the time of the focus
along = envelope(:,(numel (x) + 1) / 2);

% The same from the spectrum of the pulse, which is half its maximum at the edges of its band.  Far from an
% element, its pressure is proportional to the frequency, on each way.
f = frequency * linspace (0.01, 2, 200)';
spectrum = exp (-log (2) * ((f / frequency - 1) * 2 / bandwidth) .^ 2) .* f .^ 2;
pattern = zeros (numel (f), numel (x));
for element = array.positions(1,:)
  R = sqrt (focus ^ 2 + (x - element) .^ 2);
  late = (R - sqrt (focus ^ 2 + element ^ 2)) / c;
  u = pi * f / c * (array.s * (x - element) ./ R + eps);
  pattern = pattern + exp (-2i * pi * f * late) .* sin (u) ./ u ./ repmat (R, numel (f), 1);
end
acrossexpected = abs (spectrum' * pattern .^ 2);
alongexpected = abs ((spectrum .* abs (pattern(:,(end + 1) / 2)) .^ 2)' * exp (2i * pi * f * (times - 2 * focus / c)));

width = @(positions, values) getfield (pistonbeam (positions, values), 'width');
widths = [width(x, across), width(x, acrossexpected), width(depth, along), width(depth, alongexpected)];
narrowband = 0.886 * lambda * focus / aperture;
fprintf ('-6 dB across: %.3f mm; expected %.3f mm, and %.3f mm at one frequency\n', ...
         [widths(1:2), narrowband] * 1e3);
fprintf ('-6 dB along: %.3f mm; expected %.3f mm\n', widths(3:4) * 1e3);

decibels = @(values) 20 * log10 (max (values / max (values(:)), 1e-6));
picture = newpicture (760, 800);
subplot ('position', [0.12, 0.42, 0.76, 0.53]);
imagesc (x * 1e3, depth * 1e3, decibels (envelope), [-60, 0]);
colormap (gray (64));
hold ('on');
contour (x * 1e3, depth * 1e3, decibels (envelope), [-6, -6], 'r', 'linewidth', 2);
axis ([-2, 2, 29, 31]);
ylabel ('depth ct / 2 in mm');
title ('Echo of a point in the focus of 64 elements; red: -6 dB');
ylabel (colorbar (), 'envelope / dB');

subplot ('position', [0.12, 0.09, 0.34, 0.22]);
plot (x * 1e3, decibels (across), 'b', x * 1e3, decibels (acrossexpected), 'r--');
axis ([-2, 2, -60, 0]);
xlabel ('x / mm');
ylabel ('dB');
title (sprintf ('Across: %.2f mm', widths(1) * 1e3));

subplot ('position', [0.60, 0.09, 0.34, 0.22]);
plot (depth * 1e3, decibels (along), 'b', depth * 1e3, decibels (alongexpected), 'r--');
axis ([29, 31, -60, 0]);
xlabel ('depth / mm');
title (sprintf ('Along: %.2f mm', widths(3) * 1e3));
savepicture (picture, 'pointspread.png');
