%!function path = lenspath (Y, focus) # 0 without a lens
%!  path = 0;
%!  if (focus < Inf)
%!    path = sqrt (focus ^ 2 + Y .^ 2) - focus;
%!  endif
%!endfunction
%!function p = probesum (points, k, focus, attenuated) # small parts of the elements, each with the phase of the lens itself
%!  [X, Y, C] = ndgrid (((1:4) - 2.5) / 4 * 0.27e-3, ((1:160) - 80.5) / 160 * 5e-3, ((1:128) - 64.5) * 0.3e-3);
%!  late = k * (sqrt (C .^ 2 + 35e-3 ^ 2) + lenspath (Y, focus));
%!  velocity = sin (pi * (C / 0.3e-3 + 64) / 128) .^ 2 .* exp (1i * late) * 0.27e-3 / 4 * 5e-3 / 160;
%!  p = zeros (columns (points), 1);
%!  for n = 1:columns (points)
%!    R = sqrt ((points(1,n) - X - C) .^ 2 + (points(2,n) - Y) .^ 2 + points(3,n) ^ 2);
%!    p(n) = k / (2 * pi) * sum ((velocity .* exp ((-1i * k - attenuated) * R) ./ R)(:));
%!  endfor
%!endfunction
%!function width = widthof (depth, k, focus, attenuated)
%!  y = (-30:30) * 0.1e-3;
%!  width = beamwidth (y, probesum ([0 * y; y; 0 * y + depth], k, focus, attenuated));
%!endfunction
%!shared e, k, loss
%! e = run_example ("clinicalprobe", 200);
%! k = 2 * pi * 5e6 / 1540;
%! loss = 0.5 * 5 * 100 / 20 * log (10);                   # dB/cm to Np/m
%!test # the medium, and the printed numbers
%! assert ([real(e.k), imag(e.k)], [k, -loss], -1e-12);
%! said = cellfun (@str2double, regexp (e.printed, '[\d.]+(?= (mm|dB|strips))', "match"));
%! widths = [e.beam.width(e.at (25e-3)), e.expected, e.beambare.width(e.at (25e-3)), ...
%!           e.beam.width(e.at (35e-3)), e.beambare.width(e.at (35e-3))] * 1e3;
%! assert (said, [columns(e.probe.positions) / 128, 25, widths(1:3), 35, widths(4:5), e.lost, 8.75], 0.0051);
%!test # the widths of the beam in elevation, with and without the lens, by an independent sum
%! for depth = [25e-3, 35e-3]
%!   assert (e.beam.width(e.at (depth)), widthof (depth, k, 25e-3, loss), -0.015);
%!   assert (e.beambare.width(e.at (depth)), widthof (depth, k, Inf, loss), -0.015);
%! endfor
%!test # at the focus of the lens the width is that of a sinc
%! half = fzero (@(t) sin (pi * t) / (pi * t) - 0.5, [0.5, 0.7]);
%! assert (e.expected, 2 * half * 1540 / 5e6 * 25e-3 / 5e-3, -1e-3);
%! assert (e.beam.width(e.at (25e-3)), e.expected, -0.01);
%!test # what the attenuation takes is a little more than from a plane wave, since most paths are longer
%! f = [0; 0; 35e-3];
%! lost = 20 * log10 (abs (probesum (f, k, 25e-3, 0) / probesum (f, k, 25e-3, loss)));
%! assert (e.lost, lost, 0.01);
%! assert (e.lost > 8.75 && e.lost < 9);
%!test # on the axis the lens raises the pressure at its focus and at that of the phases
%! middle = find (abs (e.y) < 1e-9);
%! gain = @(depth) 20 * log10 (abs (e.across(1,middle,e.at (depth)) / e.acrossbare(1,middle,e.at (depth))));
%! for depth = [25e-3, 35e-3]
%!   f = [0; 0; depth];
%!   assert (gain (depth), 20 * log10 (abs (probesum (f, k, 25e-3, loss) / probesum (f, k, Inf, loss))), 0.05);
%! endfor
%! assert ([gain(25e-3), gain(35e-3)], [2.6, 1.0], 0.05);
