% number = readlength (name, argument, value)
%
% Like readnumber, and raises an error unless the value is positive.

function number = readlength (name, argument, value)

  number = readnumber (name, argument, value);
  if (~ (number > 0))
    error ([name, ':', argument], '%s must be positive.', argument);
  end

end
