%!shared e
%! e = run_example ("axisresponse", 50);
%!test # the difference from the closed form is below the tolerance
%! assert (max (abs (e.difference)) < e.tolerance);
%! said = str2double (regexp (e.printed, 'closed form ([\d.e-]+);', "tokens", "once"));
%! assert (said, max (abs (e.difference)), -0.06);
%!test # the arcs by counting directions that meet the piston
%! angles = (0.5:99999.5) / 1e5 * 2 * pi;
%! for t = [6.8, 7.3, 7.7, 7.9, 8.1, 8.3] * 1e-6
%!   radius = sqrt ((e.c * t) ^ 2 - e.z ^ 2);
%!   share = mean (abs (radius * cos (angles)) < e.s / 2 & abs (radius * sin (angles)) < e.l / 2);
%!   assert (e.arc (t), share, 1e-4);
%! endfor
%!test # but for the length of the step, p is the arc
%! apart = min (abs (e.t - e.arrivals), [], 2) > 2 * e.rise;
%! assert (mean (apart) > 0.5);
%! assert (max (abs (e.p(apart) - e.arc (e.t(apart)))) < 2e-3);
