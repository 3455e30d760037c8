%!shared e
%! e = run_example ("pulse", 60);
%!test # before the waves of the edges, the pressure is that of the plane wave
%! since = e.t(e.before) - e.distance / e.c;
%! v = (since > 0 & since < e.duration) .* sin (2e6 * pi * since) .* sin (pi * since / e.duration) .^ 2;
%! assert (max (abs (e.axial(e.before) - v)) < 1e-5);
%! assert (max (abs (v)) > 0.8);
%! assert (e.largest < 1e-5);
%!test # the waves of the sides begin, and those of the corners end, when geometry says
%! first = norm ([12e-3, 7.5e-3]) / 1500;
%! last = norm ([12e-3, 7.5e-3, 7.5e-3]) / 1500 + 2e-6;
%! assert (e.seen(1) > first && e.seen(1) < first + 0.2e-6);    # they rise from 0
%! assert (e.seen(2) < last && e.seen(2) > last - 0.4e-6);
%! said = cellfun (@str2double, regexp (e.printed, 'from ([\d.]+) to ([\d.]+) us', "tokens"){1});
%! assert (said, e.seen * 1e6, 0.006);
%!test # nothing is in front of z = ct, and most of the pressure is right behind it
%! for n = 1:4
%!   p = squeeze (e.p(n,:,1,:));
%!   [X, Z] = ndgrid (e.x, e.z);
%!   beside = max (abs (X) - e.a / 2, 0);
%!   ahead = hypot (beside, Z) > e.fronts(n) + 0.05e-3;
%!   assert (max (abs (p(ahead))) < 2e-4);
%!   [~, loudest] = max (abs (p(:)));
%!   assert (Z(loudest) > e.fronts(n) - 3e-3 && Z(loudest) < e.fronts(n));
%! endfor
%!test # the frames are those of a sum over the piston
%! points = [3e-3, 9e-3; 0, 0; 14e-3, 12e-3];
%! [X, Y] = ndgrid (((1:300) - 150.5) / 300 * e.a);
%! for n = 1:2
%!   R = sqrt ((points(1,n) - X) .^ 2 + (points(2,n) - Y) .^ 2 + points(3,n) ^ 2)(:);
%!   t = e.fronts(2) / e.c;
%!   v = @(t) (t > 0 & t < 2e-6) .* sin (2e6 * pi * t) .* sin (5e5 * pi * t) .^ 2;
%!   slope = (v (t - R / e.c + 1e-10) - v (t - R / e.c - 1e-10)) / 2e-10;
%!   exact = sum (slope ./ R) / (2 * pi * e.c) * e.a ^ 2 / numel (R);
%!   p = pistonpulse (points(:,n), e.piston, e.c, e.excitation, "times", t);
%!   assert (p, exact, 3e-3);
%! endfor
