% number = readpositive (name, argument, value)
%
% Returns the value as readnumber does. Raises an error unless it is positive, too.

function number = readpositive (name, argument, value)

  number = readnumber (name, argument, value);
  if (number <= 0)
    error ([name, ':', argument], '%s must be positive.', argument);
  end

end
