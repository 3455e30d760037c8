% The near field of a square piston, and the distance at which it ends: nearfield.png
%
% On the axis the pressure oscillates up to a last maximum, and falls as 1/z far away.  Both distances
% follow from the Rayleigh integral with R = z + (x^2 + y^2) / 2z in the phase and R = z in the
% denominator.  For a square of side a, with u = a / sqrt (2 lambda z), it is
%
%   |p| = 2 |F(u)|^2,    F(u) = integral of exp (-i pi t^2 / 2), t = 0 ... u
%
% Far away F(u) = u, so that |p| = 2 u^2 = a^2 / (lambda z), which is S / (lambda z) as for any piston.
% The last maximum is the first one of |F(u)|, at u = 1.2094: z = 0.342 a^2 / lambda. The next term of
% F gives |p| = 2 u^2 (1 - pi^2 u^4 / 45). So |p| differs from 1/z by less than a fraction e for z >
% a^2 / lambda * pi / (2 sqrt (45 e)).

lambda = 1500 / 1e6;                        % 1 MHz in water, in metres
k = 2 * pi / lambda;
a = 10 * lambda;

z = logspace (-3, 0.3, 6000);
axial = abs (reshape (pistongrid (0, 0, z, a, a, k, 'tolerance', 1e-6), 1, []));
far = a ^ 2 ./ (lambda * z);

% The last maximum, and its position from Fresnel's integral.
last = find (axial(2:end-1) > axial(1:end-2) & axial(2:end-1) > axial(3:end), 1, 'last') + 1;
F = @(u) quadgk (@(t) exp (-1i * pi / 2 * t .^ 2), 0, u);
u = fminsearch (@(u) -abs (F (u)), 1);
lastexpected = a ^ 2 / (2 * lambda * u ^ 2);
fprintf ('last maximum on the axis: %.4g at %.4g mm; in Fresnel''s approximation %.4g at %.4g mm\n', ...
         axial(last), z(last) * 1e3, 2 * abs (F (u)) ^ 2, lastexpected * 1e3);

% The distance from which |p| is within 1 % of 1/z.
within = 0.01;
meets = find (abs (axial ./ far - 1) > within, 1, 'last') + 1;
meetsexpected = a ^ 2 / lambda * pi / (2 * sqrt (45 * within));
fprintf ('1/z holds within %g %% from %.4g mm; expected %.4g mm\n', ...
         100 * within, z(meets) * 1e3, meetsexpected * 1e3);

picture = newpicture (760, 800);
subplot ('position', [0.12, 0.56, 0.78, 0.38]);
across = linspace (-a, a, 161);
along = linspace (0.5e-3, 80e-3, 400);
pistonplot (across, 0, along, pistongrid (across, 0, along, a, a, k));
title (sprintf ('Square piston of %g mm, 1 MHz in water, plane y = 0', a * 1e3));

subplot ('position', [0.12, 0.09, 0.84, 0.38]);
beyond = far < 2.4;
semilogx (z * 1e3, axial, 'b', z(beyond) * 1e3, far(beyond), 'r--', z(last) * 1e3, axial(last), 'bo', ...
          z(meets) * 1e3, axial(meets), 'rs');
axis ([1, 2000, 0, 2.4]);
xlabel ('z / mm');
ylabel ('|p|, plane wave = 1');
title ('On the axis');
text (3.2, 1.95, sprintf ('last maximum, %.3g mm', z(last) * 1e3), 'color', 'b');
text (85, 2.2, 'far field, a^2 / (\lambda z)', 'color', 'r');
text (14, 0.3, sprintf ('within 1 %% of it from %.3g mm on', z(meets) * 1e3), 'color', 'r');
savepicture (picture, 'nearfield.png');
