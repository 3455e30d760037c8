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

%!function v = table (M)   # abscissas and weights, with NaN where nothing is read
%!  v = NaN (M, 2);
%!  read = 1:2 * floor ((M + 1) / 2);
%!  v(read) = 2 * rand (numel (read), 1) - 1;
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

%!function x = first_of (v)   # as mxGetScalar does: the first nonzero element of a sparse array, or 0
%!  if (issparse (v))
%!    v = [nonzeros(v); 0];
%!  endif
%!  x = real (double (v(1)));
%!endfunction

%!function given = plain (given)   # the same call with doubles of the plainest shape
%!  given{1} = given{1}(:,:);
%!  given{2} = 0;
%!  given(3:5) = num2cell (cellfun (@first_of, given(3:5)));
%!  if (numel (given) > 5)
%!    given{6} = "cuda";
%!  endif
%!  if (numel (given) > 6 && is_table (given{7}))
%!    given{7} = real (given{7}(:,:));
%!  elseif (numel (given) > 6)
%!    given{7} = fix (first_of (given{7}));
%!  endif
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

%!function text = documented (message)   # what docs/troubleshooting.md has of the message
%!  persistent page = fileread (fullfile (fileparts (which ("run_blocks")), "..", "..", "docs", "troubleshooting.md"));
%!  text = regexprep (message, '^ERROR: [^\n]* at line \d+\n *(.*\.)\n*$', '$1');
%!  text = regexprep (text, '^[lsk] \(argument \d\)', '<name> (argument <n>)');
%!  assert (! isempty (strfind (page, ["\n", text, "\n"])), "%s", message);
%!endfunction

%!test # every call is right or ends with a documented error, and the host survives
%! calls = 2000;
%! if (strcmp (getenv ("PISTONFIELD_LONG"), "1"))
%!   calls = 25000;
%! endif
%! rand ("twister", 20261121);
%! good = {[0 0.001; 0 0.002; 0.01 0.02], 0, 0.01, 0.005, 4188.79};
%! expected = pistonfield (good{:});
%! told = {};
%! right = numbers = 0;
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
%!     if (outputs == 1)
%!       assert (p, pistonfield (plain (given){:}));
%!       numbers += all (isfinite (p)) && any (p);
%!     endif
%!   else
%!     told{end+1} = documented (message);
%!   endif
%!   if (mod (n, 20) == 0)
%!     assert (pistonfield (good{:}), expected);
%!   endif
%! endfor
%! told = unique (told);
%! printf ("%d calls: %d right, %d of them with numbers; %d messages\n", calls, right, numbers, numel (told));
%! assert (numel (told), 12);
%! assert (numbers > calls / 5);
