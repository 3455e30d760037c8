% Reads a legacy VTK file of structured points according to the definition of the format. Returns a
% struct with dimensions, origin, spacing, and a field for each array of scalars.
function grid = read_vtk (name)
  file = fopen (name, "r", "ieee-be");
  assert (fgetl (file), "# vtk DataFile Version 3.0");
  assert (numel (fgetl (file)) <= 255);
  assert (fgetl (file), "BINARY");
  assert (fgetl (file), "DATASET STRUCTURED_POINTS");
  grid.dimensions = sscanf (fgetl (file), "DIMENSIONS %d %d %d")';
  grid.origin = sscanf (fgetl (file), "ORIGIN %f %f %f")';
  grid.spacing = sscanf (fgetl (file), "SPACING %f %f %f")';
  assert (sscanf (fgetl (file), "POINT_DATA %d"), prod (grid.dimensions));
  while (ischar (line = fgetl (file)))
    name = regexp (line, '^SCALARS (\w+) float 1$', "tokens", "once");
    assert (! isempty (name));
    assert (fgetl (file), "LOOKUP_TABLE default");
    [values, count] = fread (file, prod (grid.dimensions), "float32");
    assert (count, prod (grid.dimensions));
    grid.(name{1}) = reshape (values, grid.dimensions);      # x varies fastest
    assert (fgetl (file), "");
  endwhile
  fclose (file);
endfunction
