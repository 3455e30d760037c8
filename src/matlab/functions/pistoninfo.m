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
%   instructions  that the kernels use: CUDA, or a set of this CPU's, and what limits it
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
  limit = getenv ('PISTONFIELD_INSTRUCTION_SET');
  if (~ isempty (limit))
    about.instructions = [about.instructions, ', PISTONFIELD_INSTRUCTION_SET=', limit];
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

%!test # a limit is told
%! variable = "PISTONFIELD_INSTRUCTION_SET";
%! before = getenv (variable);
%! unwind_protect
%!   setenv (variable, "oldest");
%!   assert (! isempty (strfind (pistoninfo ().instructions, [variable, "=oldest"])));
%!   setenv (variable, "");
%!   assert (isempty (strfind (pistoninfo ().instructions, variable)));
%! unwind_protect_cleanup
%!   setenv (variable, before);
%! end_unwind_protect
