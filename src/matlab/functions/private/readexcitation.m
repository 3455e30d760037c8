% excitation = readexcitation (name, excitation)
%
% Returns an excitation with all its fields, as doubles. The library checks their ranges. The identifiers of
% errors begin with name.

function excitation = readexcitation (name, excitation)

  if (~ isstruct (excitation) || numel (excitation) ~= 1 || ~ all (isfield (excitation, {'samples', 'rate'})))
    error ([name, ':excitation'], ['excitation must be a struct with the fields samples and rate, as pistonburst ' ...
                                   'returns it.']);
  end
  if (~ isfield (excitation, 'start'))
    excitation.start = 0;
  end
  unknown = setdiff (fieldnames (excitation), {'samples', 'rate', 'start'});
  if (~ isempty (unknown))
    error ([name, ':excitation'], ...
           'excitation has an unknown field: %s. The fields are samples, rate and start.', unknown{1});
  end
  values = excitation.samples;
  if (~ isnumeric (values) || ~ isreal (values) || ~ isvector (values) || isempty (values))
    error ([name, ':excitation'], 'excitation: samples must be a vector of real numbers.');
  end
  excitation.samples = full (double (values(:)));
  for field = {'rate', 'start'}
    value = excitation.(field{1});
    if (~ isnumeric (value) || ~ isreal (value) || numel (value) ~= 1)
      error ([name, ':excitation'], 'excitation: %s must be a real number.', field{1});
    end
    excitation.(field{1}) = full (double (value));
  end

end
