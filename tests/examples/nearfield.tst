%!shared e, onaxis
%! e = run_example ("nearfield", 200);
%! onaxis = @(z) abs (rayleigh_sum ([zeros(2, numel (z)); z], e.a, e.a, e.k, 200));
%!test # the last maximum is where Fresnel's integral has it, up to the next order of (a/z)^2
%! assert (e.z(e.last) / (e.a ^ 2 / e.lambda), 0.34186, -0.015);
%! assert (e.axial(e.last), 1.8014, -0.003);
%! assert (e.lastexpected, 0.34186 * e.a ^ 2 / e.lambda, -1e-3);
%!test # a sum over the piston has a maximum there, and is lower everywhere beyond
%! z = e.z(e.last) * [0.95, 1, 1.05, 1.5, 2, 4, 8];
%! p = onaxis (z);
%! assert (p(2), e.axial(e.last), -1e-3);
%! assert (p(2) > p(1) && all (diff (p(2:end)) < 0));
%!test # 1/z holds within 1 % beyond the second distance, and not before it
%! assert (e.z(e.meets) / (e.a ^ 2 / e.lambda), 2.3416, -0.01);
%! z = e.z(e.meets) * [0.98, 1.02];
%! share = abs (onaxis (z)' ./ (e.a ^ 2 ./ (e.lambda * z)) - 1);
%! assert (share(1) > 0.01 && share(2) < 0.01);
%!test # both are printed
%! number = @(text) str2double (regexp (e.printed, text, "tokens", "once"));
%! assert (number ('last maximum on the axis: [\d.]+ at ([\d.]+) mm'), e.z(e.last) * 1e3, -1e-3);
%! assert (number ('within 1 % from ([\d.]+) mm'), e.z(e.meets) * 1e3, -1e-3);
