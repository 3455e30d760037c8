% values = inpieces (name, evaluate, count, piece, shares, quiet)
%
% Returns a column of count values: the sums of evaluate (first, last, part) over the parts
% 1:numel (shares), computed one piece at a time. shares are whole numbers proportional to the work of each
% part. Unless quiet is true, work of more than half a second shows a progress bar with the remaining time.

function values = inpieces (name, evaluate, count, piece, shares, quiet)

  values = complex (zeros (count, 1));
  total = count * sum (shares);
  done = 0;
  started = tic ();
  shown = 0;
  for first = 1:piece:count
    last = min (count, first + piece - 1);
    for part = 1:numel (shares)
      values(first:last) = values(first:last) + evaluate (first, last, part);
      done = done + (last - first + 1) * shares(part);
      seconds = toc (started);
      if (~ quiet && (shown > 0 || (done < total && seconds * total / done > 0.5)))
        if (shown == 0)
          closing = onCleanup (@() fprintf ('\n'));  % also on Ctrl-C
        end
        shown = progressbar (name, done / total, seconds, shown);
      end
    end
  end
  if (isreal (values))
    values = complex (values);                % if all pressures are 0
  end

end
