% computepart (folder)
% computepart (folder, field)
%
% Computes this process's part of a field (default: that of clusterfield) and writes it to folder, for
% example as part-0001-of-0002.mat. The folder must exist and be shared by all processes. When all processes
% have finished, joinparts joins the parts. The value at a point depends on that point only, so the result
% is the same for any number of parts.
%
%   mpirun -n 2 octave-cli --eval "addpath build/auto/octave examples/cluster; computepart ('/scratch/field')"

function computepart (folder, field)

  if (nargin < 2)
    field = clusterfield ();
  end
  [rank, size_] = rankandsize ();
  sizes = [numel(field.x), numel(field.y), numel(field.z)];
  first = floor (rank * prod (sizes) / size_) + 1;
  last = floor ((rank + 1) * prod (sizes) / size_);

  if (last - first >= 2 ^ 27 - 2 ^ 10)
    error ('computepart:size', ['The part has more than 134 million points, the limit of a variable in a ' ...
                                'MAT file: start more processes.']);
  end

  p = complex (zeros (last - first + 1, 1));
  for n = first:2 ^ 20:last                 % in pieces, to limit the memory for the points
    piece = n:min (n + 2 ^ 20 - 1, last);
    [i, j, m] = ind2sub (sizes, piece);
    points = [field.x(i); field.y(j); field.z(m)];
    p(piece - first + 1) = pistonfield_quiet (points, 0, field.l, field.s, field.k, 'cuda', field.order);
  end

  info = pistoninfo ();
  part = struct ('field', field, 'first', first, 'last', last, 'p', p, 'version', info.version, ...
                 'device', info.device);
  name = sprintf ('part-%04d-of-%04d.mat', rank + 1, size_);
  writewhole (fullfile (folder, name), part);
  fprintf ('%s: points %d to %d, on %s, %s\n', name, first, last, info.device, info.instructions);

end
