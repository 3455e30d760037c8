% [worst, refused] = order_sweep (cases, count)
%
% Returns the largest ratio of an error to the tolerance of pistonorder, 1e-2, 1e-3 and 1e-4, in the given
% cases, and the number of calls that found no order. The cases are numbers that seed the generator of
% random_field. Errors are differences from order 512 at all points, relative to the peak pressure. Each case has
% about count points.

function [worst, refused] = order_sweep (cases, count)

  worst = refused = 0;
  for number = cases
    [points, l, s] = random_field ("list", number, count);
    pressure = @(n) pistonfield_quiet (points, 0, l, s, 2 * pi, "cuda", n);
    best = pressure (512);
    errorof = @(n) max (abs (pressure (n) - best)) / max (abs (best));
    for tolerance = [1e-2, 1e-3, 1e-4]
      try
        order = pistonorder (points, l, s, 2 * pi, tolerance);
      catch failure
        assert (strncmp (failure.message, "No order up to 384", 18), failure.message);
        ++refused;
        if (max (errorof (384), errorof (400)) < 0.5 * tolerance) # with a margin, since errors go up and down
          error ("list %d, tolerance %g: no order was found, but 384 has half that error", number, tolerance);
        endif
        continue
      end_try_catch
      ratio = errorof (order) / tolerance;
      if (ratio > 1)
        printf ("list %d, tolerance %g: order %d has %.3g times that error\n", number, tolerance, order, ratio);
      endif
      worst = max (worst, ratio);
    endfor
  endfor

endfunction
