% number = readnumber (name, argument, value)
%
% Returns the value as a double. Raises an error unless the value is a finite real number. The
% message names argument, and the identifier of the error begins with name.

function number = readnumber (name, argument, value)

  if (~ isnumeric (value) || ~ isreal (value) || numel (value) ~= 1 || ~ isfinite (value))
    error ([name, ':', argument], '%s must be a finite real number.', argument);
  end
  number = full (double (value));

end
