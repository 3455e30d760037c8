%!shared good, p0, values
%! good = {[0; 0; 0.01], 0, 0.01, 0.005, 4188.79, "cuda", 10};
%! p0 = pistonfield (good{:});
%! shapes = {[], 0.5, [1; 2; 3], [1 2 3], [1 2; 3 4; 5 6], ones(3, 2, 2), zeros(3, 0), zeros(0, 2), ...
%!           NaN, Inf, -Inf, 1e9, -3, 0, 513, zeros(600, 2), 1:3, (1:3)'};
%! values = {};
%! for v = shapes
%!   for class = {"double", "single", "int8", "uint8", "int16", "uint16", "int32", "uint32", ...
%!                "int64", "uint64"}
%!     values{end+1} = cast (v{1}, class{1});
%!   endfor
%!   values{end+1} = v{1} > 0;
%!   values{end+1} = complex (v{1}, 1);
%!   values{end+1} = num2cell (v{1});
%!   values{end+1} = char (double (v{1} > 0) + 98);
%!   if (ndims (v{1}) == 2)
%!     values{end+1} = sparse (v{1});
%!     values{end+1} = sparse (v{1} > 0);
%!   endif
%! endfor
%! values(end+1:end+9) = {struct(), struct("a", {1; 2; 3}), @sin, @(x) x, inputParser(), ...
%!                        containers.Map(), {}, "", diag([1 2 3])};

%!test # with any class and shape at any argument, a call is right or ends with an error, and the host survives
%! classified = zeros (1, 2);
%! for argument = 1:7
%!   for n = 1:numel (values)
%!     arguments = good;
%!     arguments{argument} = values{n};
%!     message = message_of (arguments{:});
%!     classified(1 + isempty (message)) += 1;
%!     if (argument == 2)
%!       assert (message, "");
%!     endif
%!     if (mod (n, 50) == 0)
%!       assert (pistonfield (good{:}), p0);
%!     endif
%!   endfor
%!   assert (pistonfield (good{:}), p0);
%! endfor
%! assert (all (classified > 300));
