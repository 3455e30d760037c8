% PISTONPLOT  Picture of a pressure field on a plane.
%
%   pistonplot (x, y, z, p)
%   pistonplot (x, y, z, p, quantity)
%   pistonplot (x, y, z, p, quantity, limits)
%   pistonplot (..., name, text, ...)
%   handle = pistonplot (...)
%
% Draws into the current axes, with equal scales in both directions and a colour bar.
% The colours are perceptually uniform.
%
% Arguments
%
%   x, y, z     the axes of the plane, evenly spaced; exactly one is a single value.  The
%               horizontal direction is z, or x if the plane is z = constant.  They are
%               in metres, at most 1, and drawn in millimetres, unless 'axes' names
%               another unit.
%   p           the pressures: the result of pistongrid for these axes, or a list in the
%               same order, that of ndgrid.  Transpose an array in the order of meshgrid.
%   quantity    'linear'  magnitude (default)
%               'dB'      magnitude in decibels relative to the largest in the picture
%               'phase'   phase in degrees, in cyclic colours
%   limits      lowest and highest value of the colours, in the unit of p, in decibels or
%               in degrees.  Default, or if []: 0 and the largest, -40 and 0, -180 and 180.
%
% Names, in any order, each followed by its text
%
%   'unit'      unit of p, for example 'Pa' (the bar then shows Pa, kPa or MPa).  Without
%               a unit and a label, the bar states that a plane wave has magnitude 1, as
%               in the results of pistonfield.
%   'label'     label of the colour bar, instead of |p| or phase.
%   'title'     title of the picture.  Default: the position of the plane.
%   'axes'      unit of x, y and z in the arguments and in the picture: 'm', 'cm', 'mm',
%               'um' or 'wavelengths'.
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
% Errors: "x, y and z must be evenly spaced, ...", "x, y and z must be in metres, ...", "p must
% have ...", "quantity must be 'linear', 'dB' or 'phase'.", "limits must be two finite numbers in
% ascending order.", "After limits, ..." and "axes must be ..."
%
% See also: pistongrid, pistonarray.

function handle = pistonplot (x, y, z, p, varargin)

  if (nargin < 4)
    error ('pistonplot:arguments', 'Too few arguments. Call it as pistonplot (x, y, z, p).');
  end
  [quantity, limits, options] = readarguments (varargin);
  sides = {x, y, z};
  point = cellfun (@numel, sides) == 1;
  if (~ all (cellfun (@iseven_axis, sides)) || sum (point) ~= 1)
    error ('pistonplot:axes', ...
           'x, y and z must be evenly spaced, and exactly one of them must be a single value.');
  end
  if (~ isnumeric (p) || numel (p) ~= numel (x) * numel (y) * numel (z))
    error ('pistonplot:p', 'p must have one value for each point of the plane.');
  end

  if (~ isvector (p))
    lengths = cellfun (@numel, sides(~ point));
    shape = size (p);
    if (~ isequal (shape(shape > 1), lengths(lengths > 1)))
      error ('pistonplot:shape', ['p must have the shape that pistongrid returns for these axes. ' ...
                                  'Transpose an array in the order of meshgrid.']);
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
  values(values < shown(1)) = shown(1);     % leaves NaN as it is
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

% Reads the arguments after p: quantity, limits, and names with their texts.

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
        error ('pistonplot:limits', 'limits must be two finite numbers in ascending order.');
      end
      limits = full (double (limits(:).'));
    end
  end
  if (mod (numel (rest), 2) ~= 0 || ~ all (cellfun (isname, rest(1:2:end))) ...
      || ~ all (cellfun (@istext, rest)))
    error ('pistonplot:options', ...
           ['After limits, only ''unit'', ''label'', ''title'' and ''axes'' are allowed, each followed ' ...
            'by a text.']);
  end
  for n = 1:2:numel (rest)
    options.(lower (char (rest{n}))) = char (rest{n+1});
  end

end

function answer = istext (value)

  answer = (ischar (value) && size (value, 1) <= 1) || (isa (value, 'string') && numel (value) == 1);

end

% Returns the axes in the unit in which they are drawn, and that unit. Values above 1 are probably
% millimetres or wavelengths, not metres.

function [sides, unit] = drawnlengths (sides, unit)

  if (isempty (unit))
    largest = max (cellfun (@(values) max (abs (values)), sides));
    if (largest > 1)
      error ('pistonplot:metres', ...
             ['x, y and z must be in metres, but reach %g. If they are in millimetres, add ''axes'', ' ...
              '''mm''; if they are in metres, add ''axes'', ''m''.'], largest);
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

% Returns the values to draw, the limits, the label of the bar and the colours.

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

% Returns the unit in which the value is easiest to read, and the factor that converts to it.

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

% Returns all hues of CIELAB at lightness 65, with a chroma that screens can show for every hue.

function colours = cycliccolours ()

  hue = (0:255).' / 256 * 2 * pi;
  f = 81 / 116 + [33 * cos(hue) / 500, zeros(256, 1), -33 * sin(hue) / 200];
  white = [0.95047, 1, 1.08883];
  xyz = f .^ 3 .* white;                    % valid since f > 6/29
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
%!test # magnitudes in the plane y = 2 mm, with z horizontal, in millimetres
%! drawn = shown (x, 2e-3, z, p);
%! assert (drawn.data, abs (p));
%! assert (drawn.across([1, end])(:), [1; 2], 1e-12);
%! assert ({drawn.xlabel, drawn.ylabel, drawn.title}, {"z / mm", "x / mm", "y = 2 mm"});
%! assert (drawn.range, [0, 4]);
%!test # a plane z = constant has x horizontal
%! drawn = shown (x, z, 5e-3, p);
%! assert (drawn.data, abs (p).');
%! assert ({drawn.xlabel, drawn.ylabel, drawn.title}, {"x / mm", "y / mm", "z = 5 mm"});
%! assert (drawn.bar, "|p|, plane wave = 1");
%!test # pascals are shown in kPa or MPa according to the limits of the bar
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
%!test # a custom label and title, with and without quantity and limits
%! drawn = shown (x, 0, z, 300 * p, "title", "One piston", "label", "amplitude", "unit", "Pa");
%! assert ({drawn.bar, drawn.title}, {"amplitude / kPa", "One piston"});
%! drawn = shown (x, 0, z, p, "phase", [-90, 90], "label", "angle of p");
%! assert ({drawn.bar, drawn.range, drawn.title}, {"angle of p / degrees", [-90, 90], "y = 0 mm"});
%! assert (shown (x, 0, z, p, "Label", "intensity").bar, "intensity");
%! assert (shown (x, 0, z, p, "dB", [], "unit", "Pa").bar, "|p| / dB, 0 = 4 Pa");
%!test # NaN is not drawn as zero pressure
%! drawn = shown (x, 0, z, [1, 2; NaN, 3; 0, 5], "dB").data;
%! assert (isnan (drawn(2,1)) && drawn(3,1) == -40);
%!test # the unit changes where the number would round to 1000; a plane of zero pressure has no level
%! assert (shown (x, 0, z, 249.9 * p, "dB", "unit", "Pa").bar, "|p| / dB, 0 = 1 kPa");
%! assert (shown (x, 0, z, 0 * p, "dB", "unit", "Pa").bar, "|p| / dB, largest = 0");
%!test # axes are drawn in the named unit; values too large for metres are rejected
%! drawn = shown (x * 1e6, 2e3, z * 1e6, p, "axes", "um");
%! assert ({drawn.xlabel, drawn.ylabel, drawn.title}, {"z / um", "x / um", "y = 2000 um"});
%! assert (drawn.across([1, end])(:), [1e3; 2e3], 1e-9);
%! assert (shown (x * 1e6, 0, z * 1e6, p, "axes", "m").xlabel, "z / m");
%! assert (shown ([-1, 0, 1], 0, [0.1, 0.2], p).ylabel, "x / mm");
%!error <must be in metres, but reach 2. If they are in millimetres, add 'axes', 'mm'> pistonplot ([-1, 0, 1], 0, [1, 2], p)
%!error <must be in metres, but reach 11> pistonplot (x, -11, z, p)
%!error <axes must be 'm'> pistonplot (x, 0, z, p, "axes", "inch")
%!error <After limits, only> pistonplot (x, 0, z, p, "unit")
%!error <After limits, only> pistonplot (x, 0, z, p, "unit", 1)
%!error <After limits, only> pistonplot (x, 0, z, p, "linear", [0, 1], "colour", "red")
%!error <After limits, only> pistonplot (x, 0, z, p, "linear", [0, 1], "unit", "Pa", 1)
%!test # decibels of a list, clipped at the lower limit
%! drawn = shown (x, 0, z, p(:), "dB", [-12, 0]);
%! assert (drawn.data, max (20 * log10 (abs (p) / 4), -12), 1e-12);
%! assert (drawn.range, [-12, 0]);
%!test # phases are drawn in cyclic colours of equal lightness
%! drawn = shown (x, 0, z, p, "phase");
%! assert (drawn.data, arg (p) * 180 / pi, 1e-12);
%! assert (drawn.range, [-180, 180]);
%! assert (max (abs (drawn.colours(1,:) - drawn.colours(end,:))) < 0.02);
%! linear = ((drawn.colours + 0.055) / 1.055) .^ 2.4;
%! assert (range (linear * [0.2126; 0.7152; 0.0722]) < 1e-3);
%! assert (all (drawn.colours(:) > 0.05 & drawn.colours(:) < 0.99)); # no colour is clipped
%!test # the shape of pistongrid is accepted, that of meshgrid is rejected
%! drawn = shown (x, 0, z, reshape (p, 3, 1, 2));
%! assert (drawn.data, abs (p));
%!error <meshgrid> pistonplot (x, 0, z, p.')
%!test # a field of zeros can be drawn
%! drawn = shown (x, 0, z, zeros (3, 2), "dB");
%! assert (all (drawn.data(:) == -40));
%!error <pistonplot .x, y, z, p.> pistonplot (1, 2, 3)
%!error <must be evenly spaced, and exactly one> pistonplot ([1, 2, 4], 0, [1, 2], ones (3, 2))
%!error <must be evenly spaced, and exactly one> pistonplot ([1, 2], [1, 2], [1, 2], ones (2, 2, 2))
%!error <must be evenly spaced, and exactly one> pistonplot (1, 0, 1, 1)
%!error <one value for each point> pistonplot ([1, 2], 0, [1, 2], 1)
%!error <quantity must be> pistonplot ([0, 1], 0, [0, 1], ones (2), "loud")
%!test # all numeric classes, NaN and infinity
%! drawn = shown (int8 ([-1, 0, 1]), single (0), sparse ([0, 1]), single (p), "linear", int8 ([0, 3]));
%! assert (drawn.data, abs (p));
%! assert (drawn.range, [0, 3]);
%! assert (shown (x, 0, z, zeros (3, 2, "single")).range, [0, realmin]);
%! assert (shown (x, 0, z, [1, 2; NaN, Inf; 3, -Inf]).range, [0, 3]);
%!error <quantity must be> pistonplot ([0, 1], 0, [0, 1], ones (2), {"dB"})
%!error <two finite numbers in ascending order> pistonplot ([1, 2], 0, [1, 2], ones (2), "dB", [-Inf, 0])
%!error <two finite numbers in ascending order> pistonplot ([1, 2], 0, [1, 2], ones (2), "dB", [0, -40])
%!demo
%! x = linspace (-10e-3, 10e-3, 201);
%! z = linspace (0.2e-3, 40e-3, 400);
%! p = pistongrid (x, 0, z, 11e-3, 7.5e-3, 2 * pi / 1.5e-3);
%! pistonplot (x, 0, z, p, 'dB');
%! figure ();
%! pistonplot (x, 0, z, p, 'phase');
