%!function text = printed (code) # what the whole process prints
%!  folder = fileparts (which ("pistonfield_quiet"));
%!  command = sprintf ("octave-cli --no-history --norc --quiet --eval \"addpath ('%s'); %s\" 2>&1", folder, code);
%!  [status, text] = system (command);
%!  assert (status, 0);
%!endfunction
%!shared table, points
%! table = [-0.9 0.5; 0.2 0; -0.5 0; 0.5 0; 0 0];
%! points = [0, 1, 3; 0, 2, -1; 1, 0.5, 4];
%!test # the same numbers
%! assert (exist ("pistonfield_quiet"), 3);
%! for rule = {10, 33, table}
%!   evalc ("p = pistonfield (points, 0, 3, 2, 2, 'cuda', rule{1});");
%!   assert (pistonfield_quiet (points, 0, 3, 2, 2, "cuda", rule{1}), p);
%! endfor
%!test # no output, with an order and with a table
%! assert (printed ("p = pistonfield_quiet ([0; 0; 1], 0, 3, 2, 2);"), "");
%! assert (printed ("p = pistonfield_quiet ([0; 0; 1], 0, 3, 2, 2, 'cuda', [-0.9 0.5; 0.2 0; -0.5 0]);"), "");
%! assert (! isempty (strfind (printed ("p = pistonfield ([0; 0; 1], 0, 3, 2, 2);"), "setting order 10")));
%!test # in one process, in either order, pistonfield prints and pistonfield_quiet does not
%! once = "(%s ([0; 0; 1], 0, 3, 2, 2)); disp ('NEXT'); fflush (stdout);";
%! loud = strrep (once, "%s", "p = pistonfield");
%! quiet = strrep (once, "%s", "p = pistonfield_quiet");
%! alone = strsplit (printed (loud), "NEXT"){1};
%! assert (strsplit (printed ([loud, quiet, loud]), "NEXT"), {alone, "\n", ["\n", alone], "\n"});
%! assert (strsplit (printed ([quiet, loud, quiet]), "NEXT"), {"", ["\n", alone], "\n", "\n"});
%!test # the same errors
%! for arguments = {{1, 0, 3, 2, 2}, {points, 0, {}, 2, 2}, {points, 0, 3, 2, 2, "gpu"}, {points, 0, 3, 2, 2, "cuda", 0}}
%!   try
%!     p = pistonfield_quiet (arguments{1}{:});
%!     said = "";
%!   catch failure
%!     said = regexprep (failure.message, '^pistonfield_quiet: ', '');
%!   end_try_catch
%!   assert (! isempty (said));
%!   assert (said, message_of (arguments{1}{:}));
%! endfor
%!test # info prints the same as that of pistonfield, except for the time of compilation
%! untimed = @(text) regexprep (text, ' [\d:]{8}\n', '');
%! told = untimed (evalc ("pistonfield_quiet ('info')"));
%! assert (! isempty (strfind (told, "Compiled on")));
%! assert (told, untimed (evalc ("pistonfield ('info')")));
