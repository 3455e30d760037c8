%!function width = widthof (a, depth, k)
%!  x = (0:0.02:12) * 1e-3;
%!  p = abs (rayleigh_sum ([x; 0 * x; 0 * x + depth], a, a, k, 60));
%!  at = find (p < max (p) / 2, 1);
%!  width = 2 * interp1 (p([at-1, at]), x([at-1, at]), max (p) / 2);
%!endfunction
%!shared e
%! e = run_example ("design", 20);
%!test # this side meets the goal, also according to a sum over the piston, and no smaller side does
%! assert (widthof (e.side, e.depth, e.k), 12e-3, 0.02e-3);
%! assert (widthof (e.side - 0.1e-3, e.depth, e.k) > 12e-3);
%! assert (e.width <= 12e-3 && all (e.widths(e.sides < e.side) > 12e-3));
%! assert (str2double (regexp (e.printed, 'side ([\d.]+) mm', "tokens", "once")), e.side * 1e3, 0.005);
%!test # the beam of a small piston is that of the far field
%! assert (e.widths(1), 2 * 0.60335 * e.lambda * e.depth / e.sides(1), -0.02);
%! assert (e.side > e.sideexpected);
%!test # the width of a beam
%! assert (beamwidth (0:4, [0, 1, 2i, 1.5, 0.5]), 2.5, 1e-12);
%! assert (beamwidth (4:-1:0, [0, 1, 2i, 1.5, 0.5]), 2.5, 1e-12);
%! assert (beamwidth (0:4, [0, 1, 2, 1.5, 1.5]), NaN);
