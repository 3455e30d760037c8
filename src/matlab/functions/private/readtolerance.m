% tolerance = readtolerance (name, value)
%
% Returns the value as a double. Raises an error unless it is a tolerance. The identifier of the error begins
% with name.

function tolerance = readtolerance (name, value)

  if (~ isnumeric (value) || ~ isreal (value) || numel (value) ~= 1 || ~ (double (value) >= 1e-12 && double (value) < 1))
    error ([name, ':tolerance'], 'tolerance must be at least 1e-12 and less than 1.');
  end
  tolerance = full (double (value));

end
