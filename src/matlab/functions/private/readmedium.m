% medium = readmedium (name, medium)
%
% Returns the medium of a pulse as four numbers: speed, attenuation, exponent and reference. The library checks
% their ranges. The identifiers of errors begin with name.

function medium = readmedium (name, medium)

  if (isnumeric (medium))
    medium = struct ('speed', medium);
  end
  if (~ isstruct (medium) || numel (medium) ~= 1 || ~ isfield (medium, 'speed'))
    error ([name, ':medium'], 'medium must be the speed of sound, or a struct with the field speed.');
  end
  values = struct ('speed', 0, 'attenuation', 0, 'exponent', 1, 'reference', 0);
  for field = fieldnames (medium).'
    if (~ isfield (values, field{1}))
      error ([name, ':medium'], ['medium has an unknown field: %s. The fields are speed, attenuation, ' ...
                                 'exponent and reference.'], field{1});
    end
    value = medium.(field{1});
    if (~ isnumeric (value) || ~ isreal (value) || numel (value) ~= 1 || ~ isfinite (value))
      error ([name, ':medium'], 'medium: %s must be a finite real number.', field{1});
    end
    values.(field{1}) = full (double (value));
  end
  medium = [values.speed, values.attenuation, values.exponent, values.reference];

end
