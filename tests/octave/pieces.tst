%!shared many, warm
%! warm = "p = pistonfield_quiet ([0; 0; 1], 0, 1, 1, 1);";
%! many = struct ("l", 6e-3, "s", 0.4e-3, "positions", [((1:64) - 32.5) * 0.75e-3; zeros(2, 64)], ...
%!                "weights", exp (1i * (1:64)));
%!test # a grid computed in several pieces has the same bits as in one call
%! x = linspace (-2, 2, 151);  y = linspace (-3, 3, 149);  z = linspace (0.1, 9, 101);
%! p = pistongrid (x, y, z, 3, 2, 6, 4, "quiet");
%! assert (numel (p) > 2 ^ 21);
%! [X, Y, Z] = ndgrid (x, y, z);
%! assert (p(:), pistonfield_quiet ([X(:)'; Y(:)'; Z(:)'], 0, 3, 2, 6, "cuda", 4));
%!test # points have the same bits at any place in any piece, with one kind of piston and with three
%! N = 50001;
%! points = [linspace(-20e-3, 20e-3, N); linspace(-1e-3, 2e-3, N); linspace(1e-3, 80e-3, N)];
%! for l = {6e-3, [6e-3, 4e-3, 6e-3, 5e-3](mod (1:64, 4) + 1)}
%!   many.l = l{1};
%!   p = pistonarray (points, many, 4188.79, 4, "quiet");
%!   assert (size (p), [N, 1]);
%!   for first = [1, 7, 16380, 40000]
%!     last = min (N, first + 16700);
%!     assert (pistonarray (points(:,first:last), many, 4188.79, 4, "quiet"), p(first:last));
%!   endfor
%! endfor
%!test # the same for a grid and an array
%! x = linspace (-20e-3, 20e-3, 43);  y = linspace (-1e-3, 2e-3, 31);  z = linspace (1e-3, 80e-3, 17);
%! [X, Y, Z] = ndgrid (x, y, z);
%! p = pistonarray ({x, y, z}, many, 4188.79, 4, "quiet");
%! assert (numel (p) * 64 > 2 ^ 20);
%! assert (p(:), pistonarray ([X(:)'; Y(:)'; Z(:)'], many, 4188.79, 4, "quiet"));
%!test # the memory is that of the result and one piece, with 400 bytes for each of its pressures
%! grid = "p = pistongrid (linspace (-1, 1, 250), linspace (-1, 1, 200), linspace (0.1, 2, 200), 1, 1, 6, 4, 'quiet');";
%! bytes = taken (warm, grid);
%! printf ("grid of 10^7: %.0f MB\n", bytes / 1e6);
%! assert (bytes > 16e7 && bytes < 16e7 + 400 * 2 ^ 21);
%!test
%! many = "many = struct ('l', 6e-3, 's', 0.4e-3, 'positions', [1:64; zeros(2, 64)] * 0.75e-3);";
%! for l = {"", "many.l = (1:64) * 1e-3;"}
%!   bytes = taken (warm, [many, l{1}, " p = pistonarray (rand (3, 1e6), many, 4188.79, 2, 'quiet');"]);
%!   printf ("array of 64 at 10^6: %.0f MB\n", bytes / 1e6);
%!   assert (bytes > 16e6 && bytes < 24e6 + 16e6 + 400 * 2 ^ 20);
%! endfor
%!function check_memory (setup, call, most) # call is for few points and then for N, with at most so many bytes each
%!  for N = [1e6, 5e6]
%!    bytes = taken ([setup, "N = 1; ", call], [sprintf("N = %d; ", N), call]);
%!    printf ("%s...: %.1f bytes for each of %d points\n", call(1:22), bytes / N, N);
%!    assert (bytes > 16 * N && bytes <= most * N + 2 ^ 20 * nproc ());
%!  endfor
%!endfunction
%!test # with a tolerance: twice the result, since Octave converts it; for a list 40 bytes beside the points
%! few = "array = struct ('l', [6e-3, 6e-3, 4e-3], 's', 1e-3, 'positions', [1, 2, 4; zeros(2, 3)] * 1e-3); ";
%! symmetric = "{linspace(-1, 1, 100), linspace(-1, 1, 100), linspace(0.1, 2, ceil (N / 1e4))}";
%! oblique = strrep (symmetric, "(-1,", "(-2,");
%! check_memory ("", sprintf ("axes_ = %s; p = pistongrid (axes_{:}, 1, 1, 6, 'quiet');", symmetric), 32);
%! check_memory ("", sprintf ("axes_ = %s; p = pistongrid (axes_{:}, 1, 1, 6, 'quiet');", oblique), 32);
%! check_memory (few, sprintf ("p = pistonarray (%s, array, 6, 'quiet');", oblique), 32);
%! check_memory (few, "points = rand (3, N); p = pistonarray (points, array, 6, 'quiet');", 24 + 40);
