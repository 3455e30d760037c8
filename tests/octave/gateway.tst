%!shared good, p0, count, abscissas
%! good = {[0; 0; 0.01], 0, 0.01, 0.005, 4188.79, "cuda", 10};
%! p0 = pistonfield (good{:});
%! count = ["Must have five or six input arguments: ([list of points], ignored, l, s, k, " ...
%!          "['cuda'|'cudadp'|'cpu'|'cpusp'|'cpudp'], [nabscissas])"];
%! abscissas = "abscissas must be a number or a 2D matrix containing abscissas and weights.";

%!test # info prints four lines and returns nothing
%! lines = strsplit (strtrim (evalc ("pistonfield ('info')")), "\n");
%! assert (numel (lines), 4);
%! assert (! isempty (regexp (lines{1}, '^Compiled on \w{3} [ \d]\d \d{4} \d\d:\d\d:\d\d$')));
%! assert (strncmp (lines{2}, "mercurial id:       $Id: version,v ", 35));
%! assert (strncmp (lines{3}, "mercurial datae:    $Date: ", 27));
%! assert (strncmp (lines{4}, "mercurial revision: $Revision: ", 31));

%!test # info with an output is no query
%! assert (message_of ("info"), count);

%!test # four or eight arguments are wrong; five, six and seven are right
%! assert (message_of (good{1:4}), count);
%! assert (message_of (good{:}, 0), count);
%! for n = 5:7
%!   assert (pistonfield (good{1:n}), p0);
%! endfor

%!error <Must have one output arguments> pistonfield (good{:})
%!error <Must have one output arguments> [a, b] = pistonfield (good{:});

%!test # two or four rows, and no columns
%! rows = "Points (argument 1) must have dimension of three.";
%! assert (message_of (ones (2, 5), good{2:end}), rows);
%! assert (message_of (ones (4, 5), good{2:end}), rows);
%! assert (message_of ([], good{2:end}), rows);
%! assert (message_of (zeros (3, 0), good{2:end}),
%!         "The given grid must have at least one data point");

%!test # complex, sparse and char points
%! for points = {complex([0; 0; 1]), sparse([0; 0; 1]), "abc", {1; 2; 3}}
%!   assert (message_of (points{1}, good{2:end}), "Input must be real, full, and nonstring");
%! endfor

%!test # orders and tables of the wrong shape; fractions are cut off
%! assert (message_of (good{1:6}, [1 2 3]), abscissas);
%! assert (message_of (good{1:6}, eye (3)), abscissas);
%! assert (pistonfield (good{1:6}, 7.9), pistonfield (good{1:6}, 7));
%! assert (pistonfield (good{1:6}, 7.9) != pistonfield (good{1:6}, 8));

%!test # modes
%! unknown = "Input 5 must either be 'cuda' or 'cpu[sp,dp]'";
%! assert (message_of (good{1:5}, "CUDA"), unknown);
%! assert (message_of (good{1:5}, ""), unknown);
%! assert (message_of (good{1:5}, ["cuda"; "cuda"]), unknown);
%! assert (message_of (good{1:5}, 1),
%!         "Input 5 must be a character string and either be 'cuda' or 'cpu'");
%! for cpu = {"cpu", "cpusp", "cpudp"}
%!   assert (message_of (good{1:5}, cpu{1}), "CPU version not implemented, yet.");
%! endfor
%! assert (pistonfield (good{1:5}, "cudadp"), p0);

%!test # a sparse scalar is a number
%! for argument = [3, 4, 5, 7]
%!   arguments = good;
%!   arguments{argument} = sparse (good{argument});
%!   assert (pistonfield (arguments{:}), p0);
%!   full = sparse_ = good;
%!   full{argument} = 0;
%!   sparse_{argument} = sparse (0);
%!   assert (message_of (sparse_{:}), message_of (full{:}));
%!   if (argument < 7)
%!     assert (pistonfield (sparse_{:}), pistonfield (full{:}));
%!     assert (evalc ("p = pistonfield (sparse_{:});"), evalc ("p = pistonfield (full{:});"));
%!   endif
%! endfor
%! assert (pistonfield (good{1:6}, sparse (true)), pistonfield (good{1:6}, 1));
%! assert (pistonfield (good{1:6}, sparse (7)), pistonfield (good{1:6}, 7));

%!test # texts are read column by column, up to a zero, whatever their shape
%! for cuda = {["c"; "u"; "d"; "a"], ["cd"; "ua"], "cuda\0x", ["cdd\0"; "uapx"], "cudadp\0"}
%!   assert (pistonfield (good{1:5}, cuda{1}), p0);
%! endfor
%! assert (message_of (good{1:5}, ["c"; "p"; "u"]), "CPU version not implemented, yet.");
%! assert (message_of (good{1:5}, "\0cuda"), "Input 5 must either be 'cuda' or 'cpu[sp,dp]'");
%! info = evalc ("pistonfield ('info')");
%! for query = {["i"; "n"; "f"; "o"], ["if"; "no"], "info\0x"}
%!   assert (evalc ("pistonfield (query{1})"), info);
%! endfor

%!test # the largest and the smallest lengths
%! rand ("twister", 1);
%! for run = 1:10
%!   sides = 10 .^ (-4 * rand (1, 2));
%!   points = (2 * rand (3, 200) - 1) .* 10 .^ (-4 * rand (3, 200));
%!   points(3,:) = abs (points(3,:));
%!   call = @(points, unit) pistonfield_quiet (points * unit, 0, sides(1) * unit, sides(2) * unit, ...
%!                                             5 / max (sides) / unit, "cuda", 64);
%!   expected = call (points, 1e8);     # far from the distances that count as none
%!   assert (call (points, 1e18), expected, 2e-4 * max (abs (expected)));
%!   sides = max (sides / max (sides), 0.01);
%!   points(1:2,:) = 0;
%!   points(3,:) = max (points(3,:), 0.01);
%!   expected = call (points, 1);
%!   assert (call (points, 1e-16), expected, 2e-4 * max (abs (expected)));
%! endfor

%!test # texts are given back to the host
%! long = repmat ("x", 1, 1e6);
%! for n = 1:200
%!   message = message_of (good{1:5}, long);
%! endfor
%! assert (message, "Input 5 must either be 'cuda' or 'cpu[sp,dp]'");
%! pages = @() sscanf (fileread ("/proc/self/statm"), "%d")(2);
%! before = pages ();
%! for n = 1:100
%!   message_of (good{1:5}, long);
%! endfor
%! assert ((pages () - before) * 4096 < 2e7);

%!test # messages win in the order of the checks
%! bad = {ones(2, 0), 0, [], [], [], 1, [1 2 3]};
%! assert (message_of ("ab", bad{2:end}), "Input must be real, full, and nonstring");
%! assert (message_of (bad{:}), abscissas);
%! bad{7} = 513;
%! assert (message_of (bad{:}), "l (argument 3) must be a number.");
%! bad{3} = 1;
%! assert (message_of (bad{:}), "s (argument 4) must be a number.");
%! bad{4} = 1;
%! assert (message_of (bad{:}), "k (argument 5) must be a number.");
%! bad{5} = 1;
%! assert (message_of (bad{:}), "Points (argument 1) must have dimension of three.");
%! bad{1} = ones (3, 0);
%! assert (message_of (bad{:}), "The given grid must have at least one data point");
%! bad{1} = ones (3, 1);
%! assert (message_of (bad{:}), "Input 5 must be a character string and either be 'cuda' or 'cpu'");
%! bad{6} = "gpu";
%! assert (message_of (bad{:}), "Input 5 must either be 'cuda' or 'cpu[sp,dp]'");
%! bad{6} = "cpu";
%! assert (message_of (bad{:}), "CPU version not implemented, yet.");
%! bad{6} = "cuda";
%! assert (! isempty (strfind (message_of (bad{:}), "(N <= 512 && N>0)")));

%!test # reports of failed conditions
%! report = "^ERROR: assertion failure in %s at line \\d+\n       condition failed: \\(%s\\)\\.\n";
%! for order = [0, -3, NaN, -Inf, Inf, -1e9]
%!   text = sprintf (report, "src/FastNearfield/IntegratorCuda", "order>0");
%!   assert (! isempty (regexp (message_of (good{1:6}, order), text)));
%! endfor
%! for order = [513, 1e9]
%!   text = sprintf (report, "src/FastNearfield/RectangularPistonCuda\\.dp", "N <= 512 && N>0");
%!   assert (! isempty (regexp (message_of (good{1:6}, order), text)));
%! endfor
%! for rows = [0, 600]
%!   text = sprintf (report, "src/FastNearfield/RectangularPistonCuda", "N <= 512 && N>0");
%!   assert (! isempty (regexp (message_of (good{1:6}, ones (rows, 2)), text)));
%! endfor

%!test # the result is a complex double column
%! p = pistonfield (repmat (good{1}, 1, 7), good{2:end});
%! assert (size (p), [7 1]);
%! assert (iscomplex (p) && isa (p, "double"));
%! assert (p, repmat (p0, 7, 1));

%!test # the host prints l, s and k
%! assert (evalc ("p = pistonfield (good{1:5});"), "l=0.010000, s=0.005000, k=4188.790000\n");

%!test # help
%! text = evalc ("help pistonfield");
%! for part = {"points      3 x N real double", "Errors", "Example", "CAUTION", "1e-18"}
%!   assert (! isempty (strfind (text, part{1})));
%! endfor
