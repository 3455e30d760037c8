% shown = progressbar (name, part, seconds, shown)
%
% Prints a progress bar in place of the last shown characters, and returns its number of characters. It has
% one line: the name, the part of the work that is done, in 0 ... 1, and the time that is left, or was taken, if
% that part took so many seconds.

function shown = progressbar (name, part, seconds, shown)

  filled = floor (40 * part);
  if (part < 1)
    time = sprintf ('%s left', inwords (seconds * (1 - part) / part));
  else
    time = sprintf ('took %s', inwords (seconds));
  end
  picture = sprintf ('%s [%s%s] %3d %%, %-14s', name, repmat ('#', 1, filled), ...
                     repmat ('.', 1, 40 - filled), floor (100 * part), time);
  fprintf ('%s%s', repmat (char (8), 1, shown), picture);
  drawnow ();
  shown = numel (picture);

end

function words = inwords (seconds)

  if (seconds < 90)
    words = sprintf ('%.1f s', seconds);
  elseif (seconds < 5400)
    words = sprintf ('%.1f min', seconds / 60);
  else
    words = sprintf ('%.1f h', seconds / 3600);
  end

end
