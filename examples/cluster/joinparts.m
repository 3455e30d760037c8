% joinparts (folder)
% p = joinparts (folder)
%
% Puts the parts that computepart wrote to folder together: p has a value for each point of the grid, as
% pistongrid's. Without a result it writes field.mat there, with p and the field's description. Waits for
% nothing: call it when all processes are done. Parts that are missing, of another field or of other
% numbers of processes are errors.

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
    error ('joinparts:mixed', 'There are parts of %d and of %d in %s: remove those of one.', ...
           min (numbers(:,2)), max (numbers(:,2)), folder);
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
        error ('joinparts:size', ['field.mat can have 134 million points, as many as a variable of a ' ...
                                  'MAT file: write p = joinparts (folder).']);
      end
      p = complex (zeros (sizes));
      expected = 1;
    end
    if (~ isequaln (part.field, field))     % which may hold NaN
      error ('joinparts:field', '%s is of another field than the first part.', name);
    end
    if (~ strcmp (part.version, version_))
      error ('joinparts:version', '%s was computed by %s, the first part by %s.', name, part.version, ...
             version_);
    end
    if (part.first ~= expected || numel (part.p) ~= part.last - part.first + 1)
      error ('joinparts:range', '%s has other points than it should.', name);
    end
    p(part.first:part.last) = part.p;
    expected = part.last + 1;
  end
  if (expected ~= numel (p) + 1)
    error ('joinparts:range', 'The last part does not end with the last point.');
  end

  if (nargout > 0)
    result = p;
  else
    writewhole (fullfile (folder, 'field.mat'), struct ('field', field, 'p', p));
  end

end

% As computepart names part pair(1) of pair(2); other files are not its own.

function name = nameof (pair)

  name = sprintf ('part-%04d-of-%04d.mat', pair);

end
