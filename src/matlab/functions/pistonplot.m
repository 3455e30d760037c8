% PISTONPLOT  Picture of a pressure field on a plane.
%
%   pistonplot (x, y, z, p)
%   pistonplot (x, y, z, p, quantity)
%   pistonplot (x, y, z, p, quantity, limits)
%   pistonplot (..., name, text, ...)
%   handle = pistonplot (...)
%
% Draws into the current axes, with both directions at one scale, and a colour bar.
% Colours are perceptually even: equal steps look equal.
%
% Arguments
%
%   x, y, z     the axes of the plane, evenly spaced; one of the three has one value.  The
%               z axis is drawn to the right, or else the x axis.  They are in metres, 1
%               at most, and drawn in millimetres, unless 'axes' names another unit.
%   p           the pressures: pistongrid's for these axes, or a list in the same order,
%               that of ndgrid; an array of meshgrid's shape is to be transposed.
%   quantity    'linear'  magnitude (when left out)
%               'dB'      magnitude in decibels below the largest that is drawn
%               'phase'   phase in degrees, in colours that end where they begin
%   limits      lowest and highest value of the colours, in the unit of p, in decibels or in
%               degrees: 0 and the largest, -40 and 0, -180 and 180 when left out or [].
%
% Names, in any order, each before its text
%
%   'unit'      unit of p: 'Pa', of which the bar shows kPa or MPa where these read better,
%               or any other.  Without it and without a label the bar says that a plane wave
%               has 1, as in what pistonfield gives.
%   'label'     what the colour bar shows, in place of |p| or phase.
%   'title'     the title; without it, the position of the plane.
%   'axes'      unit of x, y and z: 'm', 'cm', 'mm', 'um' or 'wavelengths'.  They are drawn
%               in it.
%
% Result
%
%   handle      of the image.
%
% Example
%
%   x = linspace (-10e-3, 10e-3, 201);
%   z = linspace (0.2e-3, 40e-3, 400);
%   p = pistongrid (x, 0, z, 11e-3, 7.5e-3, 2 * pi / 1.5e-3);
%   subplot (2, 1, 1);  pistonplot (x, 0, z, p, 'dB');
%   subplot (2, 1, 2);  pistonplot (x, 0, z, 75e3 * p, 'linear', [0, 100e3], 'unit', 'Pa');
%
% Errors: "x, y and z must be evenly spaced axes, one of them of one value.", "x, y and z
% must be in metres. ...", "p must have a value for each point.", "quantity must be
% 'linear', 'dB' or 'phase'.", "limits must be two ascending numbers.", "After the limits come
% ..." and "axes must be ..."
%
% See also: pistongrid, pistonarray.

function handle = pistonplot (x, y, z, p, varargin)

  if (nargin < 4)
    error ('pistonplot:arguments', 'Call it as pistonplot (x, y, z, p).');
  end
  [quantity, limits, options] = readarguments (varargin);
  sides = {x, y, z};
  point = cellfun (@numel, sides) == 1;
  if (~ all (cellfun (@iseven_axis, sides)) || sum (point) ~= 1)
    error ('pistonplot:axes', 'x, y and z must be evenly spaced axes, one of them of one value.');
  end
  if (~ isnumeric (p) || numel (p) ~= numel (x) * numel (y) * numel (z))
    error ('pistonplot:p', 'p must have a value for each point.');
  end

  if (~ isvector (p))
    lengths = cellfun (@numel, sides(~ point));
    shape = size (p);
    if (~ isequal (shape(shape > 1), lengths(lengths > 1)))
      error ('pistonplot:shape', ['p must have the shape of pistongrid''s for these axes; an array of ' ...
                                  'meshgrid''s shape is to be transposed.']);
    end
  end
  p = full (double (p));
  sides = cellfun (@(values) full (double (values(:))), sides, 'UniformOutput', false);
  [sides, length_] = drawnlengths (sides, options.axes);

  names = 'xyz';
  drawn = find (~ point);
  picture = reshape (p, numel (sides{drawn(1)}), numel (sides{drawn(2)}));
  across = drawn(2);
  up = drawn(1);
  if (across ~= 3)                          % the plane z = constant
    picture = picture.';
    across = drawn(1);
    up = drawn(2);
  end

  [values, shown, label, colours] = coloured (picture, quantity, limits, options);
  values(values < shown(1)) = shown(1);     % not what is no number
  image_ = imagesc (sides{across}, sides{up}, values, shown);
  axis ('image');
  set (gca (), 'ydir', 'normal');
  colormap (gca (), colours);
  xlabel ([names(across), ' / ', length_]);
  ylabel ([names(up), ' / ', length_]);
  if (isempty (options.title))
    options.title = sprintf ('%s = %g %s', names(point), sides{point}, length_);
  end
  title (options.title);
  ylabel (colorbar (), label);
  if (nargout > 0)
    handle = image_;
  end

end

% What may follow p: quantity, limits, and names with their texts.

function [quantity, limits, options] = readarguments (rest)

  quantity = 'linear';
  limits = [];
  options = struct ('unit', '', 'label', '', 'title', '', 'axes', '');
  isname = @(value) istext (value) && isfield (options, lower (char (value)));
  if (~ isempty (rest) && ~ isname (rest{1}))
    quantity = rest{1};
    rest(1) = [];
    if (~ isempty (rest) && ~ isname (rest{1}))
      limits = rest{1};
      rest(1) = [];
      if (~ isequal (limits, []) && (~ isnumeric (limits) || ~ isreal (limits) || numel (limits) ~= 2 ...
          || ~ all (isfinite (limits)) || ~ (limits(1) < limits(2))))
        error ('pistonplot:limits', 'limits must be two ascending numbers.');
      end
      limits = full (double (limits(:).'));
    end
  end
  if (mod (numel (rest), 2) ~= 0 || ~ all (cellfun (isname, rest(1:2:end))) ...
      || ~ all (cellfun (@istext, rest)))
    error ('pistonplot:options', ...
           'After the limits come ''unit'', ''label'', ''title'' and ''axes'', each followed by a text.');
  end
  for n = 1:2:numel (rest)
    options.(lower (char (rest{n}))) = char (rest{n+1});
  end

end

function answer = istext (value)

  answer = (ischar (value) && size (value, 1) <= 1) || (isa (value, 'string') && numel (value) == 1);

end

% The axes in the unit in which they are drawn, and that unit. Numbers of millimetres or wavelengths
% are soon too large for metres.

function [sides, unit] = drawnlengths (sides, unit)

  if (isempty (unit))
    largest = max (cellfun (@(values) max (abs (values)), sides));
    if (largest > 1)
      error ('pistonplot:metres', ...
             ['x, y and z must be in metres. They reach %g: add ''axes'', ''mm'' if these are ' ...
              'millimetres, ''axes'', ''m'' if they are metres.'], largest);
    end
    sides = cellfun (@(values) values * 1e3, sides, 'UniformOutput', false);
    unit = 'mm';
  elseif (~ any (strcmp (unit, {'m', 'cm', 'mm', 'um', 'wavelengths'})))
    error ('pistonplot:unit', 'axes must be ''m'', ''cm'', ''mm'', ''um'' or ''wavelengths''.');
  end

end

function answer = iseven_axis (values)

  answer = isnumeric (values) && isreal (values) && isvector (values) && all (isfinite (values));
  if (answer && numel (values) > 1)
    steps = diff (double (values(:)));
    answer = steps(1) ~= 0 && all (abs (steps - steps(1)) < 1e-3 * abs (steps(1)));
  end

end

% What is drawn of the pressures, its limits, the label of the bar and its colours.

function [values, shown, label, colours] = coloured (p, quantity, limits, options)

  largest = max ([abs(p(isfinite (p))); realmin]);
  colours = evencolours ();
  label = '|p|';
  if (~ istext (quantity))
    quantity = '';
  end
  switch (lower (char (quantity)))
    case 'linear'
      values = abs (p);
      shown = [0, largest];
      suffix = ', plane wave = 1';
      if (~ isempty (options.label))
        suffix = '';
      end
    case 'db'
      values = 20 * log10 (abs (p) / largest);
      shown = [-40, 0];
      suffix = ' / dB, largest = 0';
      if (~ isempty (options.unit) && largest > realmin)
        [factor, unit] = prefixed (options.unit, largest);
        suffix = sprintf (' / dB, 0 = %.3g %s', largest * factor, unit);
      end
    case 'phase'
      values = angle (p) * 180 / pi;
      shown = [-180, 180];
      label = 'phase';
      suffix = ' / degrees';
      colours = cycliccolours ();
    otherwise
      error ('pistonplot:quantity', 'quantity must be ''linear'', ''dB'' or ''phase''.');
  end
  if (~ isempty (limits))
    shown = limits;
  end
  if (strcmpi (quantity, 'linear') && ~ isempty (options.unit))
    [factor, unit] = prefixed (options.unit, max (abs (shown)));
    values = values * factor;
    shown = shown * factor;
    suffix = [' / ', unit];
  end
  if (~ isempty (options.label))
    label = options.label;
  end
  label = [label, suffix];

end

% The unit in which that value reads well, and the factor to it.

function [factor, unit] = prefixed (unit, value)

  factor = 1;
  if (strcmp (unit, 'Pa') && value >= 999.5e3)
    factor = 1e-6;
    unit = 'MPa';
  elseif (strcmp (unit, 'Pa') && value >= 999.5)
    factor = 1e-3;
    unit = 'kPa';
  end

end

function colours = evencolours ()

  if (exist ('viridis'))
    colours = viridis (256);
  else
    colours = parula (256);
  end

end

% Once round the hues of CIELAB at lightness 65, with a chroma that screens can show for all of
% them.

function colours = cycliccolours ()

  hue = (0:255).' / 256 * 2 * pi;
  f = 81 / 116 + [33 * cos(hue) / 500, zeros(256, 1), -33 * sin(hue) / 200];
  white = [0.95047, 1, 1.08883];
  xyz = f .^ 3 .* white;                    % above 6/29 the cube root holds alone
  rgb = xyz * [3.2406, -0.9689, 0.0557; -1.5372, 1.8758, -0.2040; -0.4986, 0.0415, 1.0570];
  rgb = min (max (rgb, 0), 1);
  colours = 1.055 * max (rgb, 0.0031308) .^ (1 / 2.4) - 0.055;

end

%!function drawn = shown (varargin)
%!  warning ("off", "Octave:gnuplot-graphics", "local");
%!  graphics_toolkit ("gnuplot");
%!  f = figure ("visible", "off");
%!  unwind_protect
%!    handle = pistonplot (varargin{:});
%!    drawn.data = get (handle, "cdata");
%!    drawn.across = get (handle, "xdata");
%!    drawn.xlabel = get (get (gca (), "xlabel"), "string");
%!    drawn.ylabel = get (get (gca (), "ylabel"), "string");
%!    drawn.title = get (get (gca (), "title"), "string");
%!    bar = findobj (f, "type", "axes", "tag", "colorbar");
%!    drawn.bar = get (get (bar, "ylabel"), "string");
%!    drawn.range = caxis ();
%!    drawn.colours = colormap (gca ());
%!  unwind_protect_cleanup
%!    close (f);
%!  end_unwind_protect
%!endfunction
%!shared x, z, p
%! x = [-1, 0, 1] * 1e-3;
%! z = [1, 2] * 1e-3;
%! p = [1, 2i; 4, -1; 0.5, 1];
%!test # magnitudes of the plane y = 2 mm, z to the right, in millimetres
%! drawn = shown (x, 2e-3, z, p);
%! assert (drawn.data, abs (p));
%! assert (drawn.across([1, end])(:), [1; 2], 1e-12);
%! assert ({drawn.xlabel, drawn.ylabel, drawn.title}, {"z / mm", "x / mm", "y = 2 mm"});
%! assert (drawn.range, [0, 4]);
%!test # a plane in front of the piston has x to the right
%! drawn = shown (x, z, 5e-3, p);
%! assert (drawn.data, abs (p).');
%! assert ({drawn.xlabel, drawn.ylabel, drawn.title}, {"x / mm", "y / mm", "z = 5 mm"});
%! assert (drawn.bar, "|p|, plane wave = 1");
%!test # pascals, in kPa or MPa where these read better, by what the bar shows
%! drawn = shown (x, 0, z, 50 * p, "unit", "Pa");
%! assert ({drawn.bar, drawn.range, drawn.data}, {"|p| / Pa", [0, 200], 50 * abs(p)});
%! drawn = shown (x, 0, z, 300 * p, "unit", "Pa");
%! assert (drawn.bar, "|p| / kPa");
%! assert (drawn.range, [0, 1.2], 1e-12);
%! assert (drawn.data, 0.3 * abs (p), 1e-12);
%! drawn = shown (x, 0, z, 300 * p, "linear", [0, 2e6], "unit", "Pa");
%! assert (drawn.bar, "|p| / MPa");
%! assert (drawn.range, [0, 2], 1e-12);
%! drawn = shown (x, 0, z, 300e3 * p, "dB", "unit", "Pa");
%! assert (drawn.bar, "|p| / dB, 0 = 1.2 MPa");
%! drawn = shown (x, 0, z, 300 * p, "linear", "unit", "W/m^2");
%! assert ({drawn.bar, drawn.data}, {"|p| / W/m^2", 300 * abs(p)});
%!test # a label and a title of the user's, beside quantity and limits or without
%! drawn = shown (x, 0, z, 300 * p, "title", "One piston", "label", "amplitude", "unit", "Pa");
%! assert ({drawn.bar, drawn.title}, {"amplitude / kPa", "One piston"});
%! drawn = shown (x, 0, z, p, "phase", [-90, 90], "label", "angle of p");
%! assert ({drawn.bar, drawn.range, drawn.title}, {"angle of p / degrees", [-90, 90], "y = 0 mm"});
%! assert (shown (x, 0, z, p, "Label", "intensity").bar, "intensity");
%! assert (shown (x, 0, z, p, "dB", [], "unit", "Pa").bar, "|p| / dB, 0 = 4 Pa");
%!test # what is no number is not drawn as silence
%! drawn = shown (x, 0, z, [1, 2; NaN, 3; 0, 5], "dB").data;
%! assert (isnan (drawn(2,1)) && drawn(3,1) == -40);
%!test # the unit changes where the number would be a thousand; a silent plane has no level
%! assert (shown (x, 0, z, 249.9 * p, "dB", "unit", "Pa").bar, "|p| / dB, 0 = 1 kPa");
%! assert (shown (x, 0, z, 0 * p, "dB", "unit", "Pa").bar, "|p| / dB, largest = 0");
%!test # axes in a unit that is named are drawn in it, and numbers too large for metres are none
%! drawn = shown (x * 1e6, 2e3, z * 1e6, p, "axes", "um");
%! assert ({drawn.xlabel, drawn.ylabel, drawn.title}, {"z / um", "x / um", "y = 2000 um"});
%! assert (drawn.across([1, end])(:), [1e3; 2e3], 1e-9);
%! assert (shown (x * 1e6, 0, z * 1e6, p, "axes", "m").xlabel, "z / m");
%! assert (shown ([-1, 0, 1], 0, [0.1, 0.2], p).ylabel, "x / mm");
%!error <must be in metres. They reach 2: add 'axes', 'mm'> pistonplot ([-1, 0, 1], 0, [1, 2], p)
%!error <must be in metres. They reach 11> pistonplot (x, -11, z, p)
%!error <axes must be 'm'> pistonplot (x, 0, z, p, "axes", "inch")
%!error <After the limits come> pistonplot (x, 0, z, p, "unit")
%!error <After the limits come> pistonplot (x, 0, z, p, "unit", 1)
%!error <After the limits come> pistonplot (x, 0, z, p, "linear", [0, 1], "colour", "red")
%!error <After the limits come> pistonplot (x, 0, z, p, "linear", [0, 1], "unit", "Pa", 1)
%!test # decibels, of a list, cut off at the lower limit
%! drawn = shown (x, 0, z, p(:), "dB", [-12, 0]);
%! assert (drawn.data, max (20 * log10 (abs (p) / 4), -12), 1e-12);
%! assert (drawn.range, [-12, 0]);
%!test # phases, in colours that end where they begin, all equally light
%! drawn = shown (x, 0, z, p, "phase");
%! assert (drawn.data, arg (p) * 180 / pi, 1e-12);
%! assert (drawn.range, [-180, 180]);
%! assert (max (abs (drawn.colours(1,:) - drawn.colours(end,:))) < 0.02);
%! linear = ((drawn.colours + 0.055) / 1.055) .^ 2.4;
%! assert (range (linear * [0.2126; 0.7152; 0.0722]) < 1e-3);
%! assert (all (drawn.colours(:) > 0.05 & drawn.colours(:) < 0.99)); # none was cut off
%!test # pistongrid's shape is drawn, and meshgrid's is none
%! drawn = shown (x, 0, z, reshape (p, 3, 1, 2));
%! assert (drawn.data, abs (p));
%!error <meshgrid> pistonplot (x, 0, z, p.')
%!test # nothing but zeros can be drawn
%! drawn = shown (x, 0, z, zeros (3, 2), "dB");
%! assert (all (drawn.data(:) == -40));
%!error <pistonplot .x, y, z, p.> pistonplot (1, 2, 3)
%!error <evenly spaced axes> pistonplot ([1, 2, 4], 0, [1, 2], ones (3, 2))
%!error <evenly spaced axes> pistonplot ([1, 2], [1, 2], [1, 2], ones (2, 2, 2))
%!error <evenly spaced axes> pistonplot (1, 0, 1, 1)
%!error <a value for each point> pistonplot ([1, 2], 0, [1, 2], 1)
%!error <quantity must be> pistonplot ([0, 1], 0, [0, 1], ones (2), "loud")
%!test # any class of numbers, and values that are none
%! drawn = shown (int8 ([-1, 0, 1]), single (0), sparse ([0, 1]), single (p), "linear", int8 ([0, 3]));
%! assert (drawn.data, abs (p));
%! assert (drawn.range, [0, 3]);
%! assert (shown (x, 0, z, zeros (3, 2, "single")).range, [0, realmin]);
%! assert (shown (x, 0, z, [1, 2; NaN, Inf; 3, -Inf]).range, [0, 3]);
%!error <quantity must be> pistonplot ([0, 1], 0, [0, 1], ones (2), {"dB"})
%!error <two ascending numbers> pistonplot ([1, 2], 0, [1, 2], ones (2), "dB", [-Inf, 0])
%!error <two ascending numbers> pistonplot ([1, 2], 0, [1, 2], ones (2), "dB", [0, -40])
%!demo
%! x = linspace (-10e-3, 10e-3, 201);
%! z = linspace (0.2e-3, 40e-3, 400);
%! p = pistongrid (x, 0, z, 11e-3, 7.5e-3, 2 * pi / 1.5e-3);
%! pistonplot (x, 0, z, p, 'dB');
%! figure ();
%! pistonplot (x, 0, z, p, 'phase');
