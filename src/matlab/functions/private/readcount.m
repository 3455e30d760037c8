% count = readcount (name, value)
%
% Returns the argument count as a double. Raises an error unless it is a number of elements. The
% identifier of the error begins with name.

function count = readcount (name, value)

  if (~ iscounts (value, 1))
    error ([name, ':count'], 'count must be an integer from 1 to 1e6.');
  end
  count = full (double (value));

end
