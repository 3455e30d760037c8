%!shared e
%! e = run_example ("pointspread", 50);
%!test # the widths are those of theory
%! assert (e.widths(1), e.widths(2), -0.01);
%! assert (e.widths(3), e.widths(4), -0.01);
%! assert (e.widths(1), 0.886 * 1540 / 5e6 * 30e-3 / 19.2e-3, -0.05);
%! assert (e.widths(3), 1540 / 2 * 4 * log (2) / (pi * 5e6 * 0.6), -0.1);   # without the factor f ^ 2
%! said = cellfun (@str2double, regexp (e.printed, '([\d.]+) mm', "tokens"));
%! assert (said, [e.widths(1:2), 0.886 * e.lambda * e.focus / e.aperture, e.widths(3:4)] * 1e3, 6e-4);
%!test # the curves, too; the elements' height delays the echo, by l^2 / (24 F) on average
%! alike = @(values, expected) assert (values / max (values), expected / max (expected), 0.01);
%! alike (e.across, e.acrossexpected);
%! alike (e.along, interp1 (e.depth, e.alongexpected, e.depth' - 2e-3 ^ 2 / (24 * 30e-3), "spline", 0));
%!test # the echo of the focus comes at twice its distance, and is the strongest
%! [largest, top] = max (e.envelope(:));
%! [row, column] = ind2sub (size (e.envelope), top);
%! assert (e.depth(row), 30e-3, 0.02e-3);
%! assert (e.x(column), 0, 1e-12);
%!test # the envelope, against a sum of the frequencies of the signal
%! echo = e.echoes(:,60);
%! M = numel (echo);
%! n = (0:M - 1)';
%! positive = 0 * n;
%! for m = 0:(M - 1) / 2
%!   positive += (1 + (m > 0)) / M * exp (2i * pi * m * n / M) * (exp (-2i * pi * m * n / M).' * echo);
%! endfor
%! assert (abs (positive), e.envelope(:,60), 1e-9 * max (e.envelope(:)));
