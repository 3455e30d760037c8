%!function p = arraysum (points, array, weights, k)
%!  p = 0;
%!  for m = 1:numel (weights)
%!    p += weights(m) * rayleigh_sum (points - array.positions(:,m), array.l, array.s, k, 16);
%!  endfor
%!endfunction
%!shared e
%! e = run_example ("phasedarray", 200);
%!test # an independent sum over the elements, with its own steering phases, is loudest at the same angle
%! u = [sind(25); 0; cosd(25)];
%! angles = 24:0.05:26;
%! far = 20 * [sind(angles); 0 * angles; cosd(angles)];
%! [~, loudest] = max (abs (arraysum (far, e.array, exp (-1i * e.k * u' * e.array.positions), e.k)));
%! assert (angles(loudest), 25, 0.1);
%! said = str2double (regexp (e.printed, 'loudest at ([\d.]+) degrees', "tokens", "once"));
%! assert (said, angles(loudest), 0.06);
%!test # an independent sum has its maximum at the same focus, with the same width
%! f = [12; 0; 40] * 1e-3;
%! assert (norm (e.found - f) < 0.1e-3);
%! offset = (-100:100) * 0.02e-3;
%! across = f + [40; 0; -12] / norm ([40, 12]) * offset;
%! weights = exp (1i * e.k * sqrt (sum ((f - e.array.positions) .^ 2)));
%! p = abs (arraysum (across, e.array, weights, e.k));
%! [~, loudest] = max (p);
%! assert (norm (across(:,loudest) - e.found) < 0.05e-3);
%! assert (numel (find (p > max (p) / 2)) * 0.02e-3, e.width, 0.04e-3);
%!test # the width at the focus is that of an aperture of this length
%! half = fzero (@(t) sin (pi * t) / (pi * t) - 0.5, [0.5, 0.7]);
%! expected = 2 * half * e.lambda * norm ([12, 40]) * 1e-3 / (64 * e.lambda / 2 * 40 / norm ([12, 40]));
%! assert (e.width, expected, -0.04);
%! assert (e.widthexpected, expected, -1e-3);
