%!shared good, p0
%! good = {[0; 0; 0.01], 0, 0.01, 0.005, 4188.79, "cuda", 10};
%! p0 = pistonfield (good{:});

%!test # info prints four lines and returns nothing
%! lines = strsplit (strtrim (evalc ("pistonfield ('info')")), "\n");
%! assert (numel (lines), 4);
%! assert (! isempty (regexp (lines{1}, '^Compiled on \w{3} [ \d]\d \d{4} \d\d:\d\d:\d\d$')));
%! assert (strncmp (lines{2}, "mercurial id:       $Id: version,v ", 35));
%! assert (strncmp (lines{3}, "mercurial datae:    $Date: ", 27));
%! assert (strncmp (lines{4}, "mercurial revision: $Revision: ", 31));

%!test # info with an output is not a query
%! assert (! isempty (strfind (message_of ("info"), "Must have five or six input arguments")));

%!error <Must have one output arguments> pistonfield (good{:})
%!error <Must have one output arguments> [a, b] = pistonfield (good{:});

%!test # complex, sparse and char points
%! for points = {complex([0; 0; 1]), sparse([0; 0; 1]), "abc", {1; 2; 3}}
%!   assert (message_of (points{1}, good{2:end}), "Input must be real, full, and nonstring");
%! endfor

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

%!test # texts of any shape are read column by column, up to a NUL
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
%!   expected = call (points, 1e8);     # far above the distances that count as zero
%!   assert (call (points, 1e18), expected, 2e-4 * max (abs (expected)));
%!   sides = max (sides / max (sides), 0.01);
%!   points(1:2,:) = 0;
%!   points(3,:) = max (points(3,:), 0.01);
%!   expected = call (points, 1);
%!   assert (call (points, 1e-16), expected, 2e-4 * max (abs (expected)));
%! endfor

%!test # the gateway frees the host's texts
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
