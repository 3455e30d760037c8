% [...] = longwork (name, quiet, ...)
%
% Calls pistonfield_pressure with these arguments and a progress bar, with name as its title, unless quiet is
% true. The identifiers of errors begin with name.

function varargout = longwork (name, quiet, varargin)

  bar = [];
  if (~ quiet)
    bar = @(part, seconds, shown) progressbar (name, part, seconds, shown);
  end
  try
    [varargout{1:nargout}] = pistonfield_pressure (varargin{:}, bar);
  catch failure
    if (strcmp (failure.identifier, 'pistonfield:field'))
      error ([name, ':field'], '%s', strrep (failure.message, 'pistonfield_pressure: ', ''));
    end
    rethrow (failure);
  end

end
