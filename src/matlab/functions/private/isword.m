% answer = isword (value, word)
%
% Returns whether the value is this text, in upper or lower case.

function answer = isword (value, word)

  answer = (ischar (value) || isa (value, 'string')) && strcmpi (char (value), word);

end
