% joinparts (folder)
% p = joinparts (folder)
%
% Joins the parts that computepart wrote to folder. p has the shape of the result of pistongrid. Without a
% result, joinparts writes p and the description of the field to field.mat in the folder. It does not wait:
% call it when all processes have finished. Missing parts, and parts of another field or of another number
% of processes, are errors.

function result = joinparts (folder)

  found = dir (fullfile (folder, 'part-*-of-*.mat'));
  numbers = zeros (0, 2);
  for name = {found.name}
    pair = sscanf (name{1}, 'part-%d-of-%d.mat').';
    if (numel (pair) == 2 && strcmp (name{1}, nameof (pair)))
      numbers(end+1,:) = pair;
    end
  end
  if (isempty (numbers))
    error ('joinparts:none', 'There are no parts in %s.', folder);
  end
  count = numbers(1,2);
  if (any (numbers(:,2) ~= count))
    error ('joinparts:mixed', ['There are parts of a run with %d and of a run with %d processes in %s: ' ...
                               'remove those of one run.'], min (numbers(:,2)), max (numbers(:,2)), folder);
  end
  missing = setdiff (1:count, numbers(:,1));
  if (~ isempty (missing))
    error ('joinparts:missing', 'Of %d parts in %s these are missing:%s.', count, folder, ...
           sprintf (' %d', missing));
  end

  for n = 1:count
    name = fullfile (folder, nameof ([n, count]));
    part = load (name);
    if (n == 1)
      field = part.field;
      version_ = part.version;
      sizes = [numel(field.x), numel(field.y), numel(field.z)];
      if (nargout == 0 && prod (sizes) >= 2 ^ 27 - 2 ^ 10)
        error ('joinparts:size', ['The field has more than 134 million points, the limit of a variable in ' ...
                                  'a MAT file: write p = joinparts (folder).']);
      end
      p = complex (zeros (sizes));
      expected = 1;
    end
    if (~ isequaln (part.field, field))     % fields may hold NaN
      error ('joinparts:field', '%s and the first part belong to different fields.', name);
    end
    if (~ strcmp (part.version, version_))
      error ('joinparts:version', '%s was computed by %s, the first part by %s.', name, part.version, ...
             version_);
    end
    if (part.first ~= expected || numel (part.p) ~= part.last - part.first + 1)
      error ('joinparts:range', '%s does not hold the expected points.', name);
    end
    p(part.first:part.last) = part.p;
    expected = part.last + 1;
  end
  if (expected ~= numel (p) + 1)
    error ('joinparts:range', 'The last part does not end with the last point of the field.');
  end

  if (nargout > 0)
    result = p;
  else
    writewhole (fullfile (folder, 'field.mat'), struct ('field', field, 'p', p));
  end

end

% Returns the file name that computepart gives to part pair(1) of pair(2).

function name = nameof (pair)

  name = sprintf ('part-%04d-of-%04d.mat', pair);

end
