% octave-cli same_bits.m <folder of the modules> <print_fields> <table of fields>
%
% Computes the fields of the table by pistongrid and pistonarray, and its pulses by pistonpulse and pistonecho. Their bits, and what they used, must be those
% that the C++ program prints.

1;

function fields = read_table (name)
  empty = struct ("name", "", "k", [], "tolerance", [], "pistons", [], "medium", [], "burst", [], "delays", [], "receivers", [], "lens", [], "x", [], "y", [], "z", [], "points", []);
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
      case "receiver"
        fields(end).receivers(:,end+1) = numbers';
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

function array = array_of (pistons)
  M = columns (pistons);
  array = struct ("s", pistons(1,:), "l", pistons(2,:), "positions", pistons(3:5,:), ...
                  "rotations", reshape (pistons(6:14,:), 3, 3, M), "weights", complex (pistons(15,:), pistons(16,:)));
endfunction

function check_pulse (expected, f)
  names = {"speed", "attenuation", "exponent", "reference"};
  medium = cell2struct (num2cell (f.medium), names, 2);
  burst = pistonburst (num2cell (f.burst){:});
  real_weights = @(array) setfield (array, "weights", real (array.weights));
  array = setfield (real_weights (array_of (f.pistons)), "delays", f.delays);
  if (isempty (f.receivers))
    [p, t, used] = pistonpulse (f.points, array, medium, burst, "tolerance", f.tolerance);
  else
    [p, t, used] = pistonecho (f.points, array, medium, burst, "tolerance", f.tolerance, ...
                               "receive", real_weights (array_of (f.receivers)));
  endif
  [line, rest] = strtok (expected, "\n");
  numbers = strsplit (line);                # "used" and six numbers
  bits = @(values) lower (num2hex (values(:)));
  assert (bits (t(1)), numbers{2});
  assert (bits (burst.rate), numbers{3});
  assert ([numel(t), used.frequencies], str2double (numbers([4, 7])));
  assert (bits ([used.bound; used.nodes]), char (numbers(5:6)));
  assert (char (strsplit (strtrim (rest), "\n")), bits (p));
endfunction

[modules, program, table] = argv (){:};
addpath (modules);
[status, printed] = system (["'" program "' '" table "'"]);
assert (status, 0);
printed = strsplit (printed, "field ")(2:end);
fields = read_table (table);
assert (numel (fields) >= 20 && numel (printed) == numel (fields));
on_grids = pulses = 0;
for n = 1:numel (fields)
  f = fields(n);
  [heading, expected] = strtok (printed{n}, "\n");
  assert (strtok (heading), f.name);
  printf ("%s\n", heading);
  if (! isempty (f.burst))
    check_pulse (expected, f);
    ++pulses;
    continue;
  endif
  if (numel (f.k) == 2)
    f.k = complex (f.k(1), f.k(2));
  endif
  M = columns (f.pistons);
  array = array_of (f.pistons);
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
assert (on_grids > 5 && pulses > 3);
