% width = beamwidth (x, p)
%
% Returns the full width of a beam at half its maximum (-6 dB), from the pressures p at the positions x
% across it, interpolated linearly. NaN if the beam does not fall to half its maximum on both sides.

function width = beamwidth (x, p)

  p = abs (p(:)) / max (abs (p(:)));
  x = x(:);
  [~, top] = max (p);
  left = find (p(1:top) < 0.5, 1, 'last');
  right = top - 1 + find (p(top:end) < 0.5, 1);
  if (isempty (left) || isempty (right))
    width = NaN;
    return;
  end
  falls = @(outside, inside) x(outside) ...
          + (x(inside) - x(outside)) * (0.5 - p(outside)) / (p(inside) - p(outside));
  width = abs (falls (right, right - 1) - falls (left, left + 1));

end
