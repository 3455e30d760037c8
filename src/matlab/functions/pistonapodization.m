% PISTONAPODIZATION  Weights of an array by the name of a window.
%
%   weights = pistonapodization (name, counts)
%   weights = pistonapodization (name, counts, parameter)
%
% Samples the window at the elements' centres.  The window covers the aperture, count *
% pitch, which includes half a pitch beyond the centre of each end element: element n is at
%
%   u(n) = (2 n - count - 1) / count
%
% where -1 and 1 are the edges of the aperture and 0, with weight 1, its middle.  So no
% element of a Hann window has weight 0, and if the count is even, the largest weight is
% slightly below 1.  (Signal processing samples windows from end to end instead: there the
% first and last values of a Hann window are 0.)
%
% For a matrix array the weights are the products of the windows along x and along y.
%
% Arguments
%
%   name        of the window, in upper or lower case:
%     'rectangular'  1
%     'hann'         cos (pi u / 2) ^ 2
%     'hamming'      0.54 + 0.46 cos (pi u)
%     'tukey'        1 in the middle; in the tapered parts, where v = abs (u) - 1 + parameter
%                    is positive, cos (pi v / (2 parameter)) ^ 2
%     'gauss'        exp (-(parameter u) ^ 2 / 2)
%   counts      the count of pistonlinear and pistonconvex, or the counts of pistonmatrix.
%   parameter   of 'tukey': the tapered fraction, from 0 (rectangular) to 1 (Hann).
%               Default: 0.5.
%               Of 'gauss': half the aperture in standard deviations, from 0 to 10.
%               Default: 2.5, which is -27 dB at the edges.
%
% Result
%
%   weights     M x 1 double, M = prod (counts), in the order of the elements: the field
%               weights of an array.
%
% Example: a linear array's weights
%
%   array = pistonlinear (64, 0.3e-3, 5e-3, 0.27e-3);
%   array.weights = pistonapodization ('hann', 64);
%   plot (array.positions(1,:), array.weights);
%
% Errors: "name must be 'rectangular', 'hann', 'hamming', 'tukey' or 'gauss'."; "counts must be one
% integer from 1, or two, ..."; "parameter must be a finite real number." or "parameter must be
% ...", with its range or that the window has none.
%
% See also: pistonarray, pistonlinear, pistonmatrix, pistonconvex.

function weights = pistonapodization (name, counts, parameter)

  if (nargin < 2)
    error ('pistonapodization:arguments', ...
           'Too few arguments. Call it as weights = pistonapodization (name, counts).');
  end
  if (~ ischar (name) && ~ isa (name, 'string'))
    name = '';
  end
  given = {reshape(char (name), 1, []), counts};
  if (nargin > 2)
    given{3} = parameter;
  end
  weights = fromlibrary ('pistonapodization', 'apodization', given{:});

end

%!shared names
%! names = {"rectangular", "hann", "hamming", "tukey", "gauss"};
%!test # values known in closed form
%! root = sqrt (2);
%! assert (pistonapodization ("rectangular", 3), [1; 1; 1]);
%! assert (pistonapodization ("hann", 4), [2 - root; 2 + root; 2 + root; 2 - root] / 4, 1e-15);
%! assert (pistonapodization ("hann", 3), [1/4; 1; 1/4], 1e-15);
%! assert (pistonapodization ("hamming", 3), [0.31; 1; 0.31], 1e-15);
%! assert (pistonapodization ("tukey", 8), [2 - root; 2 + root; 4; 4; 4; 4; 2 + root; 2 - root] / 4, 1e-15);
%! assert (pistonapodization ("tukey", 8, 0.25), [0.5; 1; 1; 1; 1; 1; 1; 0.5], 1e-15);
%! assert (pistonapodization ("gauss", 5), exp (-[2; 1; 0; 1; 2] .^ 2 / 2), 1e-15);     # 2.5 u = -2 ... 2
%! assert (pistonapodization ("gauss", 2, 4), exp ([-2; -2]), 1e-15);
%!test # a Hann window is a raised sine between the elements
%! for count = [1, 2, 5, 64, 127]
%!   assert (pistonapodization ("hann", count), sin (pi * ((1:count)' - 1/2) / count) .^ 2, 1e-14);
%! endfor
%!test # symmetric, positive, and 1 in the middle
%! for name = names
%!   for count = [1, 2, 9, 128, 1001]
%!     weights = pistonapodization (name{1}, count);
%!     assert (size (weights), [count, 1]);
%!     assert (weights, flipud (weights));
%!     assert (all (weights > 0 & weights <= 1));
%!     assert (all (diff (weights(1:ceil (count / 2))) >= 0));
%!     if (mod (count, 2) == 1)
%!       assert (weights((count + 1) / 2), 1, 1e-15);
%!     endif
%!   endfor
%! endfor
%!test # the limits of the parameters
%! assert (pistonapodization ("tukey", 7, 0), ones (7, 1));
%! assert (pistonapodization ("tukey", 16, 1), pistonapodization ("hann", 16), 1e-15);
%! assert (pistonapodization ("gauss", 16, 0), ones (16, 1));
%! assert (20 * log10 (pistonapodization ("gauss", 1e6)(1)), -27.14, 0.01);
%!test # the defaults, and names in upper case
%! assert (pistonapodization ("Tukey", 16), pistonapodization ("tukey", 16, 0.5));
%! assert (pistonapodization ("GAUSS", 16), pistonapodization ("gauss", 16, 2.5));
%!test # a matrix array: products, in the order of pistonmatrix
%! for name = names
%!   weights = reshape (pistonapodization (name{1}, [5, 8]), 5, 8);
%!   assert (weights, pistonapodization (name{1}, 5) * pistonapodization (name{1}, 8)');
%!   assert (pistonapodization (name{1}, [5, 1]), pistonapodization (name{1}, 5));
%!   assert (pistonapodization (name{1}, [1; 8]), pistonapodization (name{1}, 8));
%! endfor
%! array = pistonmatrix ([5, 8], 1, 0.9, 0.9);
%! u = array.positions(1,:)' / 2.5;
%! v = array.positions(2,:)' / 4;
%! assert (pistonapodization ("hann", [5, 8]), (cos (pi * u / 2) .* cos (pi * v / 2)) .^ 2, 1e-15);
%!test # the highest side lobes of the far field, in decibels, are those of the continuous windows
%! array = pistonlinear (256, 0.125, 1, 0.05);
%! array.focus = [0, 0, 3000];               # at its focus the array has its far field
%! for window = {"rectangular", "hann", "hamming"; 1, 2, 2; -13.26, -31.47, -42.68}
%!   array.weights = pistonapodization (window{1}, 256);
%!   sines = linspace (window{2} / 32, 0.5, 2000);         # from the first zero of the beam
%!   far = 3000 * [0, sines; zeros(1, 2001); 1, sqrt(1 - sines .^ 2)];
%!   p = abs (pistonarray (far, array, 2 * pi, 4));
%!   assert (20 * log10 (max (p(2:end)) / p(1)), window{3}, 0.05);
%! endfor
%!error <Call it as weights = pistonapodization> pistonapodization ("hann")
%!error <name must be 'rectangular', 'hann'> pistonapodization ("square", 4)
%!error <name must be 'rectangular', 'hann'> pistonapodization (["hann"; "hann"], 4)
%!error <name must be 'rectangular', 'hann'> pistonapodization ("", 4)
%!error <name must be 'rectangular', 'hann'> pistonapodization (4, "hann")
%!error <counts must be one integer from 1, or two> pistonapodization ("hann", 0)
%!error <counts must be one integer from 1, or two> pistonapodization ("hann", [2, 2, 2])
%!error <counts must be one integer from 1, or two> pistonapodization ("hann", [2, 1.5])
%!error <counts must be one integer from 1, or two> pistonapodization ("hann", struct ("l", 1))
%!error <parameter must be omitted> pistonapodization ("hann", 4, 0.5)
%!error <parameter must be from 0 to 1> pistonapodization ("tukey", 4, 1.1)
%!error <parameter must be from 0 to 1> pistonapodization ("tukey", 4, -0.1)
%!error <parameter must be from 0 to 10> pistonapodization ("gauss", 4, 11)
%!error <parameter must be from 0 to 10> pistonapodization ("gauss", 4, -1)
%!error <parameter must be a finite real number> pistonapodization ("gauss", 4, NaN)
%!error <parameter must be a finite real number> pistonapodization ("gauss", 4, [])
%!demo
%! array = pistonlinear (64, 0.3e-3, 5e-3, 0.27e-3);
%! for name = {'hann', 'hamming', 'tukey', 'gauss'}
%!   plot (array.positions(1,:) * 1e3, pistonapodization (name{1}, 64));
%!   hold ('on');
%! end
%! xlabel ('x / mm');
%! legend ('hann', 'hamming', 'tukey', 'gauss');
