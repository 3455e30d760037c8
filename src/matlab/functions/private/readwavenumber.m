% k = readwavenumber (name, k)
%
% Returns k as a double, real if its imaginary part is 0. Raises an error unless it is a finite number. The
% identifier of the error begins with name.

function k = readwavenumber (name, k)

  if (~ isnumeric (k) || numel (k) ~= 1 || ~ isfinite (k))
    error ([name, ':k'], 'k must be a finite number.');
  end
  k = full (double (k));
  if (imag (k) == 0)
    k = real (k);
  end

end
