% picture = newpicture (width, height)
%
% Returns an empty, hidden figure of this size in pixels.

function picture = newpicture (width, height)

  if (exist ('OCTAVE_VERSION', 'builtin'))
    warning ('off', 'Octave:gnuplot-graphics', 'local');
    before = graphics_toolkit ();
    graphics_toolkit ('gnuplot');           % works without a display
    picture = figure ('visible', 'off', 'position', [0, 0, width, height]);
    graphics_toolkit (before);
  else
    picture = figure ('Visible', 'off', 'Position', [0, 0, width, height]);
  end
  set (picture, 'defaultaxesfontsize', 11, 'defaulttextfontsize', 11, 'defaultlinelinewidth', 1.5);

end
