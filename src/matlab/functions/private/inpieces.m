% values = inpieces (name, evaluate, count, piece, quiet)
%
% The column of evaluate (first, last) for all of 1:count, asked for a piece at a time. Unless it
% is to be quiet, a bar shows what is done and the time left when that is to be more than half a
% second.

function values = inpieces (name, evaluate, count, piece, quiet)

  values = complex (zeros (count, 1));
  started = tic ();
  shown = '';
  for first = 1:piece:count
    last = min (count, first + piece - 1);
    values(first:last) = evaluate (first, last);
    seconds = toc (started);
    if (~ quiet && (~ isempty (shown) || seconds * count / last > 0.5) && count > piece)
      if (isempty (shown))
        line = onCleanup (@() fprintf ('\n'));  % also when the user ends it
      end
      text = progressbar (name, last / count, seconds);
      fprintf ('%s%s', repmat (sprintf ('\b'), 1, numel (shown)), text);
      drawnow ();
      shown = text;
    end
  end

end

function text = progressbar (name, part, seconds)

  full = floor (40 * part);
  if (part < 1)
    time = sprintf ('%s left', duration_text (seconds * (1 - part) / part));
  else
    time = sprintf ('took %s', duration_text (seconds));
  end
  text = sprintf ('%s [%s%s] %3d %%, %-14s', name, repmat ('#', 1, full), repmat ('.', 1, 40 - full), ...
                  floor (100 * part), time);

end

function text = duration_text (seconds)

  if (seconds < 90)
    text = sprintf ('%.1f s', seconds);
  elseif (seconds < 5400)
    text = sprintf ('%.1f min', seconds / 60);
  else
    text = sprintf ('%.1f h', seconds / 3600);
  end

end
