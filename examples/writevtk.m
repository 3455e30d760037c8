% writevtk (file, title, x, y, z, name, values, name, values ...)
%
% Writes real fields on an evenly spaced grid to a legacy VTK file, for ParaView and others: structured
% points, binary (big-endian, single precision).  values has the shape of the result of pistongrid,
% numel (x) by numel (y) by numel (z).  x, y and z are the axes of the grid.

function writevtk (file, title_, x, y, z, varargin)

  axes_ = {x, y, z};
  sizes = cellfun (@numel, axes_);
  origin = cellfun (@(a) a(1), axes_);
  spacing = ones (1, 3);                    % for an axis with a single value
  for d = find (sizes > 1)
    spacing(d) = (axes_{d}(end) - axes_{d}(1)) / (sizes(d) - 1);
    if (any (abs (diff (axes_{d}) - spacing(d)) > 1e-6 * abs (spacing(d))))
      error ('writevtk:axes', 'x, y and z must be evenly spaced.');
    end
  end

  [id, message] = fopen (file, 'w', 'ieee-be');
  if (id < 0)
    error ('writevtk:file', '%s: %s', file, message);
  end
  closing = onCleanup (@() fclose (id));
  fprintf (id, '# vtk DataFile Version 3.0\n%s\nBINARY\nDATASET STRUCTURED_POINTS\n', title_);
  fprintf (id, 'DIMENSIONS %d %d %d\n', sizes);
  fprintf (id, 'ORIGIN %.9g %.9g %.9g\n', origin);
  fprintf (id, 'SPACING %.9g %.9g %.9g\n', spacing);
  fprintf (id, 'POINT_DATA %d\n', prod (sizes));
  for n = 1:2:numel (varargin)
    values = varargin{n+1};
    if (~ isreal (values) || numel (values) ~= prod (sizes))
      error ('writevtk:values', '%s must have one real value for each point.', varargin{n});
    end
    fprintf (id, 'SCALARS %s float 1\nLOOKUP_TABLE default\n', varargin{n});
    if (fwrite (id, values(:), 'float32') ~= numel (values))
      error ('writevtk:write', '%s could not be written: is the disk full?', file);
    end
    fprintf (id, '\n');
  end

  bytes = ftell (id);
  clear closing;
  written = dir (file);
  if (written.bytes ~= bytes)
    error ('writevtk:write', '%s could not be written: is the disk full?', file);
  end

end
