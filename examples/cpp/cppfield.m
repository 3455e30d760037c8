% Compares the field from the C++ program in this folder with that of pistongrid: cppfield.png
%
% Run the program first, in the same folder. It writes field.txt: one line per point with the real and the
% imaginary part, x varying fastest.

x = (-60:60) * 0.125;                       % all lengths in wavelengths, as in the program
z = 0.25 + (0:200) * 0.125;

numbers = load ('field.txt');
if (~ isequal (size (numbers), [numel(x) * numel(z), 2]))
  error ('cppfield:file', ['field.txt has %d lines of %d numbers: it is not from field.cpp. Run the ' ...
                           'program again.'], size (numbers));
end
fromcpp = numbers * [1; 1i];
fromhere = pistongrid (x, 0, z, 7.5, 5, 2 * pi, 20);
difference = max (abs (fromcpp - fromhere(:))) / max (abs (fromhere(:)));
fprintf ('largest difference %.2g of the peak pressure\n', difference);

largest = max (abs (fromhere(:)));
lambda = 1500 / 1e6;                        % drawn for 1 MHz in water, in metres
picture = newpicture (800, 900);
subplot (2, 1, 1);
pistonplot (x * lambda, 0, z * lambda, fromcpp, 'linear', [0, largest]);
title ('Computed in C++: piston of 5 x 7.5 wavelengths, plane y = 0');
subplot (2, 1, 2);
pistonplot (x * lambda, 0, z * lambda, fromhere, 'linear', [0, largest]);
title (sprintf ('Computed by pistongrid: differs by %.1g of the peak', difference));
savepicture (picture, 'cppfield.png');
