% A volume for other programs: volume.mat, volume.vtk, and a picture of three planes: volume.png
%
% MATLAB, Octave and Python's scipy.io read the MAT file (save -v7).  For more than 2 GB, or for HDF5, use
% '-v7.3' in MATLAB or '-hdf5' in Octave; both write HDF5, in different layouts.  The VTK file is for
% ParaView: open volume.vtk, press Apply, and show it as a volume or in slices.

lambda = 1500 / 1e6;                        % 1 MHz in water, in metres
k = 2 * pi / lambda;
l = 7.5 * lambda;
s = 5 * lambda;

x = (-30:30) * lambda / 5;
y = (-30:30) * lambda / 5;
z = (1:100) * lambda / 5;
p = pistongrid (x, y, z, l, s, k);

save ('volume.mat', '-v7', 'x', 'y', 'z', 'l', 's', 'k', 'p');
try
  saved = load ('volume.mat');              % not every host reports a full disk
  whole = isequal (saved.p, p);
catch
  whole = false;
end
if (~ whole)
  error ('volume:write', 'volume.mat could not be written: is the disk full?');
end
writevtk ('volume.vtk', 'pressure of a piston, lengths in m, plane wave = 1', x, y, z, ...
          'magnitude', abs (p), 'real', real (p), 'imaginary', imag (p));
fprintf ('volume.mat and volume.vtk written: %d x %d x %d points\n', size (p));

middle = 31;                                % x = 0 and y = 0
depth = 50;                                 % z = 10 wavelengths
largest = max (abs (p(:)));
picture = newpicture (600, 960);
subplot ('position', [0.12, 0.73, 0.8, 0.23]);
pistonplot (x, 0, z, p(:,middle,:), 'linear', [0, largest]);
title ('Piston of 7.5 x 11.25 mm, 1 MHz: plane y = 0');
subplot ('position', [0.12, 0.41, 0.8, 0.23]);
pistonplot (0, y, z, p(middle,:,:), 'linear', [0, largest]);
title ('Plane x = 0');
subplot ('position', [0.12, 0.06, 0.8, 0.26]);
pistonplot (x, y, z(depth), p(:,:,depth), 'linear', [0, largest]);
title (sprintf ('Plane z = %g mm', z(depth) * 1e3));
savepicture (picture, 'volume.png');
