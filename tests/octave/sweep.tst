% Generated calls with any class, shape and value at every argument: 2,000 calls, or 25,000 with
% PISTONFIELD_LONG=1 in the environment. The generated calls are always the same.

%!function v = pick (list)
%!  v = list{randi (numel (list))};
%!endfunction

%!function yes = chance (p)
%!  yes = rand () < p;
%!endfunction

%!function class = numeric_class ()
%!  class = pick ({"double", "single", "int8", "uint8", "int16", "uint16", "int32", "uint32", ...
%!                 "int64", "uint64"});
%!endfunction

%!function x = wild (varargin)   # numbers of every kind
%!  edges = [0, -0, 1, -1, 0.5, NaN, Inf, -Inf, 1e-310, realmin, realmax, -realmax, 1e-7, 2^31, ...
%!           -2^31 - 1, 2^53, 1e-45, 3.5e38, 512, 513, 10, 97];
%!  x = edges(randi (numel (edges), varargin{:}));
%!endfunction

%!function v = any_value ()   # a value of any class and shape
%!  shape = pick ({[0 0], [1 1], [1 1], [1 1], [3 1], [1 3], [3 2], [2 3], [5 2], [0 2], [3 0], ...
%!                 [3 2 2], [3 1 2], [1 1 2], [1 1 1 2], [1 2], [4 4], [513 2], [600 2], [2 2]});
%!  x = reshape (wild (prod (shape), 1), shape);
%!  switch (randi (15))
%!    case {1, 2, 3, 4}
%!      v = cast (x, numeric_class ());
%!    case 5
%!      v = x > 0;
%!    case 6
%!      v = char (mod (round (min (abs (x), 300)), 128));
%!    case 7
%!      v = complex (cast (x, pick ({"double", "single"})), 1);
%!    case 8
%!      v = sparse (x(:,:));
%!    case 9
%!      v = sparse (x(:,:) > 0);
%!    case 10
%!      v = num2cell (x);
%!    case 11
%!      v = pick ({struct(), struct("a", {1; 2; 3}), struct("a", {})});
%!    case 12
%!      v = pick ({@sin, @(x) x, inputParser(), containers.Map()});
%!    case 13
%!      v = pick ({"cuda", "cudadp", "cpu", "cpusp", "cpudp", "info", "CUDA", "cuda ", "", ...
%!                 "gpu", ["cuda"; "cuda"], "cuda\0", {"cuda"}, ("cuda")'});
%!    case 14
%!      v = pick ({1:3, (1:3)', diag([1 2 3]), diag([1 2 3])(:,1:2), 5:4, 3:3, ...
%!                 0.5:1, 10:-1:9, eye(2)});
%!    otherwise
%!      v = sparse (complex (x(:,:), 1));
%!  endswitch
%!endfunction

%!function v = number_near (x)   # a number near x, of a class that a call accepts
%!  v = x;
%!  if (chance (0.2))
%!    v = cast (x, numeric_class ());
%!  elseif (chance (0.1))
%!    v = [x, wild(1, 3)];
%!  elseif (chance (0.05))
%!    v = complex (x, 7);
%!  elseif (chance (0.05))
%!    v = wild ();
%!  endif
%!endfunction

%!function v = table (M)   # the rule of order M as a table, with NaN where nothing is read
%!  [x, w] = gauss_legendre_half (M);
%!  pairs = [x'; w'];
%!  v = NaN (M, 2);
%!  v(1:numel (pairs)) = pairs(:);
%!endfunction

%!function given = good_call ()
%!  size = 10 ^ (4 * rand () - 3);
%!  l = size * pick ({1, 0.3, 0, rand()});
%!  s = size * pick ({1, 2, 0, rand()});
%!  k = pick ({1, 1, -1, 0}) * 10 ^ (3 * rand () - 1) / size;
%!  N = randi (5);
%!  points = size * (2 * rand (3, N) - 1) .* 10 .^ (3 * rand (1, N) - 1.5);
%!  if (chance (0.2))
%!    points(randi (3),:) = 0;
%!  endif
%!  on_edge = rand (1, N) < 0.1;
%!  points(1,on_edge) = s / 2;
%!  above = rand (1, N) < 0.8;
%!  points(3,above) = abs (points(3,above));
%!  if (chance (0.05))
%!    points = wild (3, N);
%!  elseif (chance (0.1))
%!    points = cat (3, points, points);
%!  elseif (chance (0.02))
%!    points = zeros (3, 0);
%!  endif
%!  order = pick ({randi(16), randi(64), 10.7, 1, 2, 512, 511, -1, 0, 513, NaN});
%!  if (chance (0.3))
%!    order = table (randi (20));
%!  endif
%!  given = {points, any_value(), number_near(l), number_near(s), number_near(k), ...
%!               pick({"cuda", "cuda", "cudadp", "cuda", "cpu"}), order};
%!  given = given(1:4 + randi (3));
%!endfunction

%!function yes = is_number (v)
%!  yes = (isnumeric (v) || islogical (v) || ischar (v)) && ! isempty (v);
%!endfunction

%!function text = text_of (v)   # the characters up to a NUL, or "" if v has none
%!  text = "";
%!  if (ischar (v))
%!    text = strtok (["_", v(:)'], "\0")(2:end);
%!  endif
%!endfunction

%!function yes = is_table (v)
%!  yes = isa (v, "double") && ! issparse (v) && columns (v(:,:)) == 2;
%!endfunction

%!function yes = is_right (outputs, given)   # whether the outputs are as the help requires
%!  n = numel (given);
%!  yes = outputs == 0 && n == 1 && strcmp (text_of (given{1}), "info");
%!  if (outputs != 1 || n < 5 || n > 7)
%!    return;
%!  endif
%!  points = given{1};
%!  if (! isa (points, "double") || iscomplex (points) || issparse (points) ...
%!      || rows (points) != 3 || isempty (points) || ! all (cellfun (@is_number, given(3:5))))
%!    return;
%!  endif
%!  if (n > 5 && ! any (strcmp (text_of (given{6}), {"cuda", "cudadp"})))
%!    return;
%!  endif
%!  if (n > 6)
%!    rule = given{7};
%!    if (is_table (rule))
%!      yes = rows (rule) >= 1 && rows (rule) <= 512;
%!    else
%!      yes = is_number (rule) && numel (rule) == 1 && fix (double (real (rule))) >= 1 ...
%!            && fix (double (real (rule))) <= 512;
%!    endif
%!    return;
%!  endif
%!  yes = true;
%!endfunction

%!function [x, w, M] = rule_of (given)   # in single precision, as on the device
%!  M = 10;
%!  if (numel (given) > 6)
%!    M = fix (double (real (given{7})));
%!  endif
%!  if (numel (M) > 1)
%!    pairs = real (given{7})(1:2 * floor ((rows (M) + 1) / 2));
%!    M = rows (M);
%!    x = pairs(1:2:end)(:);
%!    w = pairs(2:2:end)(:);
%!  else
%!    [x, w] = gauss_legendre_half (M);
%!  endif
%!  x = double (single (x));
%!  w = double (single (w));
%!endfunction

%!function x = first_of (v)   # as mxGetScalar does: the first nonzero element of a sparse array, or 0
%!  if (issparse (v))
%!    v = [nonzeros(v); 0];
%!  endif
%!  x = real (double (v(1)));
%!endfunction

%!function compared = check_pressures (p, given)
%!  points = double (single (given{1}(:,:)));
%!  assert (size (p), [columns(points), 1]);
%!  assert (isa (p, "double"));
%!  scalars = cellfun (@first_of, given(3:5));
%!  scalars = double (single (scalars));
%!  [x, w, M] = rule_of (given);
%!  [l, s, k] = deal (scalars(1), scalars(2), scalars(3));
%!  compared = false;
%!  sides = [l, s];
%!  coordinates = abs (points(points != 0));
%!  # In all other cases, floats are out of range or the table is not a rule.
%!  if (any (sides < 0) || any (sides(sides > 0) < 1e-5) || any (sides > 1e3) || abs (k) > 1e8 ...
%!      || ! all (isfinite ([sides, k])) || any (coordinates < 1e-9) || any (coordinates > 1e6) ...
%!      || any (isnan (points(:))) || ! all (abs (x) < 1) || ! all (abs (w) <= 2))
%!    return;
%!  endif
%!  [expected, bound] = literal_pressure (points, l, s, k, x, w, M);
%!  comparable = bound < 0.01;
%!  assert (all (abs (p - expected)(comparable) <= bound(comparable)),
%!          "%s", disp ({p, expected, bound, given}));
%!  compared = any (comparable);
%!endfunction

%!function [p, message] = call (outputs, given)
%!  message = p = "";
%!  results = cell (1, outputs);
%!  try
%!    [results{:}] = pistonfield (given{:});
%!    if (outputs > 0)
%!      p = results{1};
%!    endif
%!  catch failure
%!    message = regexprep (failure.message, '^pistonfield: ', '');
%!  end_try_catch
%!endfunction

%!function n = number_of_message (message)   # its number in the documented messages, or 0
%!  persistent known = { ...
%!    ["Must have five or six input arguments: ([list of points], ignored, l, s, k, " ...
%!     "['cuda'|'cudadp'|'cpu'|'cpusp'|'cpudp'], [nabscissas])"], ...
%!    "Must have one output arguments", ...
%!    "Input must be real, full, and nonstring", ...
%!    "abscissas must be a number or a 2D matrix containing abscissas and weights.", ...
%!    "l (argument 3) must be a number.", ...
%!    "s (argument 4) must be a number.", ...
%!    "k (argument 5) must be a number.", ...
%!    "Points (argument 1) must have dimension of three.", ...
%!    "The given grid must have at least one data point", ...
%!    "Input 5 must be a character string and either be 'cuda' or 'cpu'", ...
%!    "Input 5 must either be 'cuda' or 'cpu[sp,dp]'", ...
%!    "CPU version not implemented, yet."};
%!  persistent reports = { ...
%!    ["^ERROR: assertion failure in src/FastNearfield/IntegratorCuda at line \\d+\n" ...
%!     "       condition failed: \\(order>0\\)\\.\n"], ...
%!    ["^ERROR: assertion failure in src/FastNearfield/RectangularPistonCuda(\\.dp)? at line " ...
%!     "\\d+\n       condition failed: \\(N <= 512 && N>0\\)\\.\n"]};
%!  n = find (strcmp (message, known));
%!  if (isempty (n))
%!    report = find (! cellfun (@isempty, regexp (message, reports)));
%!    n = max ([0, numel(known) + report]);
%!  endif
%!endfunction

%!test # every call is right or ends with a documented error, and the host survives
%! calls = 2000;
%! if (strcmp (getenv ("PISTONFIELD_LONG"), "1"))
%!   calls = 25000;
%! endif
%! rand ("twister", 20261121);
%! good = {[0 0.001; 0 0.002; 0.01 0.02], 0, 0.01, 0.005, 4188.79};
%! expected = pistonfield (good{:});
%! told = zeros (1, 14);
%! right = compared = 0;
%! for n = 1:calls
%!   given = good_call ();
%!   outputs = 1;
%!   if (chance (0.5))
%!     for spoiled = 1:randi (2)
%!       given{randi (numel (given) + chance (0.1))} = any_value ();
%!     endfor
%!   endif
%!   if (chance (0.03))
%!     outputs = randi (4) - 1;
%!   elseif (chance (0.03))
%!     given = given(1:randi (numel (given) + 1) - 1);
%!   endif
%!   [p, message] = call (outputs, given);
%!   assert (is_right (outputs, given) == isempty (message), "%s", disp ({message, given}));
%!   if (isempty (message))
%!     right += 1;
%!     compared += outputs == 1 && check_pressures (p, given);
%!   else
%!     kind = number_of_message (message);
%!     assert (kind > 0, "%s", message);
%!     told(kind) += 1;
%!   endif
%!   if (mod (n, 20) == 0)
%!     assert (pistonfield (good{:}), expected);
%!   endif
%! endfor
%! printf ("%d calls: %d right, %d of them compared; messages:%s\n", calls, right, compared,
%!         sprintf (" %d", told));
%! assert (all (told > 0));
%! assert (compared > calls / 5);
