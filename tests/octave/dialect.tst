%!test # functions for users are written in the language common to MATLAB and Octave
%! folder = fileparts (which ("pistongrid"));
%! files = [glob(fullfile (folder, "*.m")); glob(fullfile (folder, "private", "*.m"))];
%! assert (numel (files) >= 9);
%! examples = fullfile (fileparts (which ("run_blocks")), "..", "..", "examples");
%! files = [files; glob(fullfile (examples, "*.m")); glob(fullfile (examples, "*", "*.m"))];
%! assert (numel (files) >= 20);
%! name = [tempname(), ".m"];
%! for file = files'
%!   code = regexprep (fileread (file{1}), '(?<=^|\n)%[^\n]*', '');   # without comments and tests
%!   only_octave = '(?<=^|\n)[^\n''%]*(?:"|#|\<(?:end[a-z_]+|do|until|unwind_protect|printf|puts)\>)[^\n]*';
%!   assert (regexp (code, only_octave, "match"), cell (1, 0));
%!   unwind_protect
%!     fid = fopen (name, "w");
%!     fputs (fid, code);
%!     fclose (fid);
%!     warning ("error", "Octave:language-extension", "local");
%!     __parse_file__ (name);
%!   unwind_protect_cleanup
%!     warning ("off", "Octave:language-extension", "local");
%!     unlink (name);
%!   end_unwind_protect
%! endfor
