% number = readnumber (name, argument, value): the value of that argument of the function of that
% name, which must be a number, as a double.

function number = readnumber (name, argument, value)

  if (~ isnumeric (value) || ~ isreal (value) || numel (value) ~= 1 || ~ isfinite (value))
    error ([name, ':', argument], '%s must be a finite real number.', argument);
  end
  number = full (double (value));

end
