% order = defaultorder (name, points, array, k)
%
% Returns the order with an error below 1e-4 of the peak pressure at the points, for an array from
% readarray. Raises an error if there is no such order. The identifier of the error begins with
% name.

function order = defaultorder (name, points, array, k)

  longest = max (abs ([array.l; array.s]));
  resolved = abs (k) * longest / 4;         % one node per half turn of the phase along a side
  order = chooseorder (points, array, k, 1e-4, 2 ^ ceil (log2 (min (512, max (64, 2 * resolved)))));
  if (isempty (order))
    error ([name, ':order'], ...
           ['No order up to 384 keeps the error below 1e-4 of the peak pressure at these points. Pass an ' ...
            'order, leave out points that lie behind a piston or next to the edges of very long ' ...
            'sides, or call pistonorder with another tolerance.']);
  end

end
