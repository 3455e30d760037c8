% order = defaultorder (name, points, array, k): the order for an error of 1e-4 of the peak at the
% points, of an array of readarray, or an error of the function of that name.

function order = defaultorder (name, points, array, k)

  longest = max (abs ([array.l; array.s]));
  resolved = abs (k) * longest / 4;         % a node for each half turn of the phase along a side
  order = chooseorder (points, array, k, 1e-4, 2 ^ ceil (log2 (min (512, max (64, 2 * resolved)))));
  if (isempty (order))
    error ([name, ':order'], ...
           ['No order up to 384 brings the pressure within 1e-4 of its peak at these points. Give an ' ...
            'order, leave out points that lie behind a piston or next to the edges of very long ' ...
            'sides, or call pistonorder with another tolerance.']);
  end

end
