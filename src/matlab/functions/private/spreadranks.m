% ranks = spreadranks (N, count): about that many of 1:N, rising: the first half of them one after
% the other, then ever wider apart, up to N.

function ranks = spreadranks (N, count)

  if (N <= count)
    ranks = 1:N;
    return
  end
  half = floor (count / 2);
  ranks = unique (round ([1:half, half * (N / half) .^ ((1:half) / half)]));

end
