%!test # beside its arguments a call takes its result, as it computes it and as Octave has it, and little else a core
%! for points = [1e5, 5e5, 1e6, 3e6, 1e7]
%!   call = "p = pistonfield (points, 0, 0.01, 0.005, 4188.79);";
%!   many = sprintf ("points = zeros (3, %d); points(3,:) = 0.01;", points);
%!   bytes = taken (["points = [0; 0; 0.01]; ", call, many], call);
%!   printf ("%d points: %.1f bytes each\n", points, bytes / points);
%!   assert (bytes > 16 * points && bytes <= 40 * points + 2 ^ 18 * nproc ());
%! endfor
