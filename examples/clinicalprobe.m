% A linear probe with an elevation lens, in tissue that attenuates: clinicalprobe.png
%
% The 128 elements are focused by their phases at 35 mm, in the plane of the image.  Across that plane, in
% elevation, each element is one piston, and a lens on its face focuses at 25 mm.  There the beam of the
% element's height H is a sinc: its full width at half the pressure is 1.207 lambda F / H.

frequency = 5e6;                            % Hz
speed = 1540;                               % in tissue, in m/s
lossless = 2 * pi * frequency / speed;
k = lossless - 1i * pistonattenuation (0.5, frequency);         % 0.5 dB/(cm MHz)

height = 5e-3;                              % in metres
bare = pistonlinear (128, 0.3e-3, height, 0.27e-3);
bare.weights = pistonapodization ('hann', 128);
bare.focus = [0; 0; 35e-3];
lens = 25e-3;
probe = pistonlens (bare, lens, k);
fprintf ('each element has %d strips\n', size (probe.positions, 2) / 128);

x = (-50:50) * 0.2e-3;                      % in the plane of the image
y = (-50:50) * 0.2e-3;                      % across it
z = (20:220) * 0.25e-3;
accuracy = {'tolerance', 1e-3, 'quiet'};

% The beam in elevation, and what the attenuation takes from the focus.
across = pistonarray ({0, y, z}, probe, k, accuracy{:});
acrossbare = pistonarray ({0, y, z}, bare, k, accuracy{:});
beam = pistonbeam (y, squeeze (across));
beambare = pistonbeam (y, squeeze (acrossbare));
at = @(depth) find (abs (z - depth) < 1e-9);
expected = 1.207 * speed / frequency * lens / height;
fprintf ('at %g mm the beam is %.2f mm wide in elevation, expected %.2f mm; without the lens %.2f mm\n', ...
         lens * 1e3, beam.width(at (lens)) * 1e3, expected * 1e3, beambare.width(at (lens)) * 1e3);
fprintf ('at 35 mm it is %.2f mm wide, without the lens %.2f mm\n', ...
         beam.width(at (35e-3)) * 1e3, beambare.width(at (35e-3)) * 1e3);
level = @(k) 20 * log10 (abs (pistonarray (bare.focus, probe, k, accuracy{:})));
lost = level (lossless) - level (k);
fprintf ('attenuation takes %.2f dB from the focus, and %.2f dB from a plane wave\n', lost, 0.5 * 5 * 3.5);

picture = newpicture (1000, 520);
set (picture, 'defaultaxesfontsize', 8, 'defaulttextfontsize', 8);
planes = {pistonarray({x, 0, z}, bare, k, accuracy{:}), acrossbare, ...
          pistonarray({x, 0, z}, probe, k, accuracy{:}), across};
titles = {'plane of the image, without a lens', 'elevation, without a lens', ...
          'plane of the image, with the lens', 'elevation, with the lens'};
edges = {[], beambare, [], beam};
for n = 1:4
  subplot ('position', [0.08 + 0.49 * (mod (n, 2) == 0), 0.6 - 0.5 * (n > 2), 0.34, 0.34]);
  if (isempty (edges{n}))
    pistonplot (x, 0, z, planes{n}, 'dB');
    hold ('on');
    plot (35, 0, 'r+', 'markersize', 12, 'linewidth', 2);
  else
    pistonplot (0, y, z, planes{n}, 'dB');
    hold ('on');
    plot (z * 1e3, [edges{n}.left(:), edges{n}.right(:)] * 1e3, 'r', 'linewidth', 1);
  end
  title (titles{n});
end
savepicture (picture, 'clinicalprobe.png');
