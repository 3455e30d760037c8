% octave-cli same_bits.m <folder of the modules> <print_fields> <table of fields>
%
% Computes the fields of the table by pistongrid and pistonarray. Their bits, and what they used, must be those
% that the C++ program prints.

1;

function fields = read_table (name)
  empty = struct ("name", "", "k", [], "tolerance", [], "pistons", [], "lens", [], "x", [], "y", [], "z", [], "points", []);
  fields = empty([]);
  for line = strsplit (fileread (name), "\n")
    [word, rest] = strtok (line{1});
    numbers = str2double (strsplit (strtrim (rest)));
    switch (word)
      case {"", "#"}
      case "field"
        fields(end+1) = empty;
        fields(end).name = strtrim (rest);
      case "piston"
        fields(end).pistons(:,end+1) = numbers';
      case "point"
        fields(end).points(:,end+1) = numbers';
      otherwise
        fields(end).(word) = numbers;
    endswitch
  endfor
endfunction

function bits = bits_of (p)
  bits = lower ([num2hex(real (p(:))), repmat(" ", numel (p), 1), num2hex(imag (p(:)))]);
endfunction

function check (expected, p, used)
  [line, rest] = strtok (expected, "\n");
  numbers = strsplit (line);                # "used" and six numbers
  precision = {"none", "double"; "single", "both"}{1 + (numbers{4} == "1"), 1 + (numbers{5} == "1")};
  assert (used.orders, str2double (numbers(2:3)));
  assert (used.precision, precision);
  assert (lower (num2hex ([used.nodes; used.bound])), char (numbers(6:7)));
  lines = char (strsplit (strtrim (rest), "\n"));
  assert (rows (lines), numel (p));
  assert (lines, bits_of (p));
endfunction

[modules, program, table] = argv (){:};
addpath (modules);
[status, printed] = system (["'" program "' '" table "'"]);
assert (status, 0);
printed = strsplit (printed, "field ")(2:end);
fields = read_table (table);
assert (numel (fields) >= 20 && numel (printed) == numel (fields));
on_grids = 0;
for n = 1:numel (fields)
  f = fields(n);
  [heading, expected] = strtok (printed{n}, "\n");
  assert (strtok (heading), f.name);
  printf ("%s\n", heading);
  if (numel (f.k) == 2)
    f.k = complex (f.k(1), f.k(2));
  endif
  M = columns (f.pistons);
  array = struct ("s", f.pistons(1,:), "l", f.pistons(2,:), "positions", f.pistons(3:5,:), ...
                  "rotations", reshape (f.pistons(6:14,:), 3, 3, M), ...
                  "weights", complex (f.pistons(15,:), f.pistons(16,:)));
  if (! isempty (f.lens))
    array = pistonlens (array, f.lens(1), f.k, "tolerance", f.lens(2));
  endif
  where = f.points;
  if (isempty (where))
    where = {f.x, f.y, f.z};
  endif
  [p, used] = pistonarray (where, array, f.k, "tolerance", f.tolerance);
  check (expected, p, used);
  if (iscell (where) && M == 1 && isempty (f.lens))
    [p, used] = pistongrid (where{:}, array.l, array.s, f.k, "tolerance", f.tolerance);
    check (expected, p, used);
    ++on_grids;
  endif
endfor
assert (on_grids > 5);
