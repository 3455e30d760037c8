%!shared e
%! e = run_example ("cppfield", 200);
%!test # both programs compute the field of the piston
%! assert (e.difference < 1e-5);
%! at = [700, 12345, 24000];
%! [i, m] = ind2sub ([121, 201], at);
%! points = [(i - 61) / 8; 0 * i; 0.25 + (m - 1) / 8];
%! p = rayleigh_sum (points, 7.5, 5, 2 * pi, 200);
%! assert (e.fromcpp(at), p, 1e-3);
%! assert (e.fromhere(at)(:), p, 1e-3);
%!test # a file of another program is rejected
%! file = fopen ("field.txt", "w");
%! fprintf (file, "1 2\n3 4\n");
%! fclose (file);
%! try
%!   evalc ("cppfield");
%!   said = "";
%! catch failure
%!   said = failure.message;
%! end_try_catch
%! assert (strfind (said, "field.txt has 2 lines of 2 numbers") == 1);
