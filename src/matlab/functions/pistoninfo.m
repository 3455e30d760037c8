% PISTONINFO  Version, device and host of pistonfield.
%
%   pistoninfo
%   info = pistoninfo ()
%
% Prints, or returns as a struct of texts, the facts to include in a problem report:
%
%   version       version of pistonfield and revision of its sources
%   built         date and compiler of the build
%   device        the device in use, and its number of threads or multiprocessors
%   reason        why the module was built for this kind of device
%   instructions  the instructions of the kernels: CUDA, or the CPU's instruction set
%   host          the program that runs this function, and the kind of computer
%
% Errors: "pistonfield is not built", as for pistonfield.
%
% See also: pistonfield.

function info = pistoninfo ()

  about = pistonfield_about ();
  if (~ isempty (about.workers))
    about.device = [about.device, ', ', about.workers];
  end
  facts = struct ('version', sprintf ('pistonfield %s, revision %s', about.version, about.revision), ...
                  'built', sprintf ('%s with %s', about.compiled, about.compiler), ...
                  'device', about.device, ...
                  'reason', about.reason, ...
                  'instructions', about.instructions, ...
                  'host', host ());
  if (nargout > 0)
    info = facts;
  else
    for name = fieldnames (facts).'
      fprintf ('%-13s %s\n', name{1}, facts.(name{1}));
    end
  end

end

function words = host ()

  if (exist ('OCTAVE_VERSION', 'builtin'))
    name = 'GNU Octave';
  else
    name = 'MATLAB';
  end
  words = sprintf ('%s %s on %s', name, version (), computer ());

end

%!test # no text is empty, and the printed texts are the returned ones
%! info = pistoninfo ();
%! printed = evalc ("pistoninfo");
%! names = {"version", "built", "device", "reason", "instructions", "host"};
%! assert (fieldnames (info)', names);
%! for name = names
%!   assert (length (info.(name{1})) > 2);
%!   assert (! isempty (strfind (printed, sprintf ("%-13s %s\n", name{1}, info.(name{1})))));
%! endfor
%! assert (strncmp (info.host, ["GNU Octave " version()], 12));
%! assert (! isempty (regexp (info.version, '^pistonfield \d+\.\d+\.\d+')));

%!test # the environment does not change the instructions
%! used = pistoninfo ().instructions;
%! assert (any (strcmp (used, {"CUDA", "NEON", "SSE2", "AVX2", "AVX-512"})));
%! variable = "PISTONFIELD_INSTRUCTION_SET";
%! unwind_protect
%!   for value = {"oldest", "avx2", "unknown"}
%!     setenv (variable, value{1});
%!     assert (pistoninfo ().instructions, used);
%!   endfor
%! unwind_protect_cleanup
%!   unsetenv (variable);
%! end_unwind_protect
