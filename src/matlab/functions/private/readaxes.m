% axes_ = readaxes (name, axes_)
%
% Returns the axes {x, y, z} of a grid as rows of doubles. The identifier of its error begins with name.

function axes_ = readaxes (name, axes_)

  if (numel (axes_) ~= 3 || ~ all (cellfun (@isaxis, axes_)))
    error ([name, ':axes'], 'x, y and z must be non-empty real vectors.');
  end
  axes_ = cellfun (@(values) full (double (values(:).')), axes_(:).', 'UniformOutput', false);

end

function answer = isaxis (values)

  answer = isnumeric (values) && isreal (values) && isvector (values) && ~ isempty (values);

end
