% The error message of the call pistonfield (varargin{:}) with one output, or "" if it succeeds.
function message = message_of (varargin)
  message = "";
  try
    p = pistonfield (varargin{:});
  catch failure
    message = regexprep (failure.message, '^pistonfield: ', '');
  end_try_catch
endfunction
