% pulse_loop: the scene of pulse_benchmark.cpp by a loop over frequencies, and its time. The order is
% sufficient for an error of 1e-3 at the highest frequency.
function pulse_loop ()
  [X, Z] = ndgrid (linspace (-5, 5, 100), linspace (2, 7, 100));
  at = [X(:)'; 0.7 * ones(1, numel (X)); Z(:)'];
  T = 12;  t = 1.8 + (0:255)' * T / 256;
  ts = (0:32) / 16;  v = sin (2 * pi * ts) .* sin (pi * ts / 2) .^ 2;
  seconds = Inf;
  for run = 1:5
    tic;
    n = 1:24;  P = zeros (numel (n), columns (at));
    for i = n
      k = 2 * pi * i / T;
      V = sum (v .* exp (-1i * k * ts)) / 16;
      P(i, :) = V * 1i * pistonfield (at, 0, 7.5, 5, k, 'cuda', 8 + ceil (k));
    end
    p = 2 / T * real (exp (2i * pi / T * t * n) * P);
    seconds = min (seconds, toc);
  end
  printf ('loop over %d frequencies in Octave: %.1f ms\n', numel (n), 1e3 * seconds);
end
