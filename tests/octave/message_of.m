% What the call pistonfield (varargin{:}) with one output says when it fails; "" when it does not.
function message = message_of (varargin)
  message = "";
  try
    p = pistonfield (varargin{:});
  catch failure
    message = regexprep (failure.message, '^pistonfield: ', '');
  end_try_catch
endfunction
