% answer = iscounts (values, allowed)
%
% Returns whether values are numbers of elements: integers from 1, with a product of at most 1e6.
% allowed lists how many there may be.

function answer = iscounts (values, allowed)

  answer = isnumeric (values) && isreal (values) && any (numel (values) == allowed) ...
           && all (values(:) >= 1) && all (values(:) == round (values(:))) ...
           && prod (double (values(:))) <= 1e6;

end
