% savepicture (picture, name): writes the figure of newpicture as a PNG file, and closes it.

function savepicture (picture, name)

  if (exist ('OCTAVE_VERSION', 'builtin'))
    position = get (picture, 'position');
    print (picture, name, '-dpng', sprintf ('-S%d,%d', position(3:4)));
  else
    set (picture, 'PaperPositionMode', 'auto');
    print (picture, name, '-dpng', '-r96');
  end
  close (picture);
  fprintf ('%s written\n', name);

end
