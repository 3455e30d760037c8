% PISTONINFO  What pistonfield runs on here.
%
%   pistoninfo
%   info = pistoninfo ()
%
% Prints, or returns as a struct of texts, what a report of a problem should say:
%
%   version       of pistonfield, and the revision of its sources
%   built         when, and with which compiler
%   device        that calls run on, and how many threads or multiprocessors it has
%   reason        why the module was built for this kind of device
%   instructions  that the kernels use: CUDA, or a set of this CPU's
%   host          that runs this function, and the kind of computer
%
% Errors: "pistonfield is not built", as pistonfield's.
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

%!test # every line says something, printed as returned
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

%!test # the instructions are those that calls use, whatever the environment says
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
