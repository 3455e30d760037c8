% options = readpulseoptions (name, given, others)
%
% Reads the last arguments of pistonpulse and pistonecho: names with their values, and 'quiet'. Returns a struct
% of rate and times, empty if not given, tolerance, quiet, and of the names in others, empty if not given. The
% identifiers of errors begin with name.

function options = readpulseoptions (name, given, others)

  options = struct ('rate', [], 'times', [], 'tolerance', 1e-4, 'quiet', false);
  for other = others
    options.(other{1}) = [];
  end
  valued = setdiff (fieldnames (options), {'quiet'});
  while (~ isempty (given))
    word = '';
    if (ischar (given{1}) || isa (given{1}, 'string'))
      word = lower (char (given{1}));
    end
    if (strcmp (word, 'quiet'))
      options.quiet = true;
      given(1) = [];
    elseif (any (strcmp (word, valued)) && numel (given) > 1)
      options.(word) = given{2};
      given(1:2) = [];
    else
      error ([name, ':options'], ...
             'After excitation, only these are allowed: ''quiet'', and each with its value: %s.', ...
             strjoin (valued.', ', '));
    end
  end
  if (~ isempty (options.rate) && ~ isempty (options.times))
    error ([name, ':both'], 'Pass a rate or times, not both.');
  end
  if (~ isempty (options.rate))
    options.rate = readpositive (name, 'rate', options.rate);
  end
  options.tolerance = readnumber (name, 'tolerance', options.tolerance);
  if (~ isnumeric (options.times) || ~ isreal (options.times))
    error ([name, ':times'], 'times must be one or more finite numbers in equal steps upwards.');
  end
  options.times = full (double (options.times(:)));

end
