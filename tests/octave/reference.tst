%!test # orders 10, 17 and 64 are within the bound of single precision, 3 * 2^-24 * (1 + k R) for the farthest corner's R
%! data = fullfile (fileparts (which ("run_blocks")), "..", "data");
%! for order = [10, 17, 64]
%!   all_ = dlmread (fullfile (data, sprintf ("dev%d.txt", order)));
%!   pistons = unique (all_(:,1:3), "rows");
%!   assert (rows (pistons), 5);
%!   for piston = pistons'
%!     r = all_(all (all_(:,1:3) == piston', 2),:);
%!     [l, s, k] = num2cell (piston){:};
%!     p = complex (pistonfield (r(:,4:6)', 0, l, s, k, "cuda", order));
%!     R = sqrt ((abs (r(:,4)) + s / 2) .^ 2 + (abs (r(:,5)) + l / 2) .^ 2 + r(:,6) .^ 2);
%!     assert (size (p), [rows(r), 1]);
%!     assert (all (abs (p - complex (r(:,7), r(:,8))) <= 3 * 2^-24 * (1 + k * R)));
%!   endfor
%! endfor
