% result = fromlibrary (name, what, ...)
%
% Calls pistonfield_pressure (what, ...) for the function name, with arguments as users passed them: numbers
% of any class, a struct from librarypistons, and anything else. Raises its errors as those of that function,
% where the width and the height of a piston are s and l, and a frequency is f.

function result = fromlibrary (name, what, varargin)

  values = cellfun (@plain, varargin, 'UniformOutput', false);
  try
    result = pistonfield_pressure (what, values{:});
  catch failure
    if (~ strcmp (failure.identifier, 'pistonfield:field'))
      rethrow (failure);
    end
    message = strrep (failure.message, 'pistonfield_pressure: ', '');
    message = regexprep (message, {'^width', '^height', '^frequency'}, {'s', 'l', 'f'});
    error ([name, ':', strtok(message)], '%s', message);
  end

end

function value = plain (value)

  if (isnumeric (value) && isreal (value))
    value = full (double (value));
  elseif (~ isnumeric (value) && ~ ischar (value) && ~ isstruct (value))
    value = NaN;
  end

end
