% ranks = spreadranks (N, count)
%
% Returns about count of 1:N in ascending order: the first half are consecutive, the others are spaced ever
% wider, up to N.

function ranks = spreadranks (N, count)

  if (N <= count)
    ranks = 1:N;
    return
  end
  half = floor (count / 2);
  ranks = unique (round ([1:half, half * (N / half) .^ ((1:half) / half)]));

end
