% PISTONATTENUATION  Attenuation of a medium in nepers per metre.
%
%   alpha = pistonattenuation (coefficient, f)
%   alpha = pistonattenuation (coefficient, f, exponent)
%
% Tables list attenuation in decibels and centimetres, and how it rises with frequency:
%
%   alpha = coefficient * (f / 1 MHz) ^ exponent * 100 * log (10) / 20
%
% With it, the wave number of the medium is 2 pi f / c - 1i alpha, in 1/m.  All functions but
% pistonfield take it: that one reads the real part.
%
% Arguments
%
%   coefficient  in dB/(cm MHz ^ exponent), at least 0.
%   f            frequency in Hz, or an array of frequencies: positive.
%   exponent     from 0 to 3.  Default: 1, which is about that of soft tissue.  That of
%                water is 2.
%
% Result
%
%   alpha        in Np/m: double, of the shape of f.
%
% Example: 0.5 dB/(cm MHz) at 3 MHz
%
%   f = 3e6;
%   c = 1540;
%   k = 2 * pi * f / c - 1i * pistonattenuation (0.5, f);
%
% Errors: "coefficient must be ...", "exponent must be ..." and "f must be positive and finite real
% numbers."
%
% See also: pistongrid, pistonarray, pistonpascals.

function alpha = pistonattenuation (coefficient, f, exponent)

  if (nargin < 2)
    error ('pistonattenuation:arguments', ...
           'Too few arguments. Call it as alpha = pistonattenuation (coefficient, f).');
  end
  if (nargin < 3)
    exponent = 1;
  end
  coefficient = readnumber ('pistonattenuation', 'coefficient', coefficient);
  exponent = readnumber ('pistonattenuation', 'exponent', exponent);
  if (coefficient < 0)
    error ('pistonattenuation:coefficient', 'coefficient must be at least 0.');
  end
  if (exponent < 0 || exponent > 3)
    error ('pistonattenuation:exponent', 'exponent must be from 0 to 3.');
  end
  if (~ isnumeric (f) || ~ isreal (f) || any (~ isfinite (f(:)) | f(:) <= 0))
    error ('pistonattenuation:f', 'f must be positive and finite real numbers.');
  end
  alpha = coefficient * (full (double (f)) / 1e6) .^ exponent * (100 * log (10) / 20);

end

%!test # 1 Np = 20 / log (10) dB = 8.686 dB
%! assert (pistonattenuation (20 / log (10), 1e6), 100, 1e-12);
%! assert (pistonattenuation (0.5, 3e6), 0.5 * 3 * 100 / 8.685889638065036, 1e-12);
%! assert (pistonattenuation (0.0022, 5e6, 2), 0.0022 * 25 * 100 / 8.685889638065036, 1e-13);
%!test # a plane wave loses as many decibels on its way as the coefficient states
%! f = [1, 2, 5] * 1e6;
%! p = exp (-pistonattenuation (0.7, f, 1.1) * 0.03);
%! assert (-20 * log10 (p), 0.7 * (f / 1e6) .^ 1.1 * 3, 1e-12);
%!test # the number of C++ and Python
%! assert (pistonattenuation (0.7, 3.3e6, 1.1), 29.967400147374047, -4e-16);
%!test # shapes, classes and limits
%! f = reshape (1:6, 1, 2, 3) * 1e5;
%! assert (size (pistonattenuation (1, f)), [1, 2, 3]);
%! assert (class (pistonattenuation (single (1), single (1e6))), "double");
%! assert (pistonattenuation (int8 (2), int32 (1e6), 0), pistonattenuation (2, 1e6));
%! assert (pistonattenuation (0, 1e6, 3), 0);
%! assert (pistonattenuation (2, 1e9, 0), pistonattenuation (2, 1, 0));
%! assert (pistonattenuation (1, []), []);
%!error <Call it as alpha = pistonattenuation> pistonattenuation (1)
%!error <coefficient must be at least 0> pistonattenuation (-1, 1e6)
%!error <coefficient must be a finite real number> pistonattenuation (Inf, 1e6)
%!error <exponent must be from 0 to 3> pistonattenuation (1, 1e6, 3.1)
%!error <exponent must be from 0 to 3> pistonattenuation (1, 1e6, -1)
%!error <exponent must be a finite real number> pistonattenuation (1, 1e6, NaN)
%!error <f must be positive and finite> pistonattenuation (1, [1e6, 0])
%!error <f must be positive and finite> pistonattenuation (1, NaN)
%!error <f must be positive and finite> pistonattenuation (1, 1i)
%!error <f must be positive and finite> pistonattenuation (1, "1")
