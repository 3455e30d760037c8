% PISTONFIELD_QUIET  The function pistonfield without its progress lines.
%
%   p = pistonfield_quiet (points, ignored, l, s, k, mode, nabscissas)
%
% For the other functions of this package.  Users call pistonfield, or pistongrid and
% pistonarray, which print nothing.

function p = pistonfield_quiet (varargin)

  p = pistonfield (varargin{:});  % runs only if the compiled module is missing; raises that error

end
