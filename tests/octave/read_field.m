% The fields of tests/data/<name>: a struct array with l, s, k, points (3 x N), p (N x 1), and the
% bound for single precision, 3 * 2^-24 * (1 + k R), where R is the distance to the farthest
% corner.
function fields = read_field (name)
  folder = fileparts (fileparts (mfilename ("fullpath")));
  rows = dlmread (fullfile (folder, "data", name));
  [pistons, ~, index] = unique (rows(:,1:3), "rows");
  for n = 1:size (pistons, 1)
    r = rows(index == n,:);
    f.l = pistons(n,1);
    f.s = pistons(n,2);
    f.k = pistons(n,3);
    f.points = r(:,4:6)';
    f.p = complex (r(:,7), r(:,8));
    R = sqrt ((abs (r(:,4)) + f.s / 2) .^ 2 + (abs (r(:,5)) + f.l / 2) .^ 2 + r(:,6) .^ 2);
    f.bound = 3 * 2^-24 * (1 + f.k * R);
    fields(n) = f;
  endfor
endfunction
