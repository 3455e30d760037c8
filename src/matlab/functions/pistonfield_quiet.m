% PISTONFIELD_QUIET  The function pistonfield without its progress lines.
%
%   p = pistonfield_quiet (points, ignored, l, s, k, mode, nabscissas)
%
% For the functions beside it.  Use pistonfield, or pistongrid and pistonarray, which
% are quiet.

function p = pistonfield_quiet (varargin)

  p = pistonfield (varargin{:});  % only where the compiled module is missing

end
