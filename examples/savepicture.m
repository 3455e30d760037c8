% savepicture (picture, name)
%
% Writes a figure from newpicture to a PNG file, and closes it.

function savepicture (picture, name)

  if (exist (name, 'file'))
    delete (name);
  end
  if (exist ('OCTAVE_VERSION', 'builtin'))
    position = get (picture, 'position');
    print (picture, name, '-dpng', sprintf ('-S%d,%d', position(3:4)));
  else
    set (picture, 'PaperPositionMode', 'auto');
    print (picture, name, '-dpng', '-r96');
  end
  close (picture);
  try
    whole = ~ isempty (imread (name));      % not every host reports a full disk
  catch
    whole = false;
  end
  if (~ whole)
    error ('savepicture:write', '%s could not be written: is the disk full?', name);
  end
  fprintf ('%s written\n', name);

end
