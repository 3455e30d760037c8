% octave-cli scripts/demo.m <build folder>
%
% Computes the field of a 5λ × 7.5λ piston, 1 MHz in water, in the plane y = 0. Prints the speed and the
% error, and draws field.png.

build = argv (){1};
addpath (fullfile (build, "octave"));
device = strsplit (strtrim (fileread (fullfile (build, "device.txt"))), "\n");

lambda = 1500 / 1e6;               % m
k = 2 * pi / lambda;
l = 7.5 * lambda;                  % side along y
s = 5 * lambda;                    % side along x
x = (-150:150) * 0.04 * lambda;
z = (5:505) * 0.04 * lambda;
[X, Z] = ndgrid (x, z);
points = [X(:)'; zeros(1, numel (X)); Z(:)'];

p64 = pistonfield (points, 0, l, s, k, "cuda", 64);
tic;
p10 = pistonfield (points, 0, l, s, k, "cuda", 10);
seconds = toc;
N = columns (points);
rate = N / seconds;
difference = max (abs (p10 - p64)) / max (abs (p64));

warning ("off", "Octave:gnuplot-graphics");
graphics_toolkit ("gnuplot");     % works without a display
figure ("visible", "off");
imagesc (z * 1e3, x * 1e3, reshape (abs (p10), size (X)));
axis ("image");
set (gca (), "ydir", "normal");
xlabel ("z / mm");
ylabel ("x / mm");
title (sprintf ("Piston of 5 by 7.5 wavelengths, plane y = 0: %d points, order 10", N));
bar = colorbar ();
ylabel (bar, "|p|, plane wave = 1");
if (exist ("field.png", "file"))
  delete ("field.png");
endif
print ("field.png", "-dpng", "-S960,600");
imread ("field.png");              # fails if the disk was full

printf ("\n");
printf ("device             %s\n", device{1});
printf ("                   %s\n", device{2});
printf ("points             %d\n", N);
printf ("order              10\n");
printf ("points per second  %.3g (the whole call)\n", rate);
printf ("peak difference    %.2g of the peak pressure, between order 10 and order 64\n", difference);
printf ("field.png          written\n");
