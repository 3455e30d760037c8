%!function check (name, order)
%!  fields = read_field (name);
%!  assert (numel (fields), 5);
%!  for f = fields
%!    p = complex (pistonfield (f.points, 0, f.l, f.s, f.k, "cuda", order));
%!    assert (size (p), size (f.p));
%!    assert (all (abs (p - f.p) <= f.bound));
%!  endfor
%!endfunction

%!test # order 10 within the bound
%! check ("dev10.txt", 10);
%!test # order 17 within the bound
%! check ("dev17.txt", 17);
%!test # order 64 within the bound
%! check ("dev64.txt", 64);

%!test # order 64 agrees with the exact integral wherever the rule in double precision does
%! exact = read_field ("exact.txt");
%! rule = read_field ("dev64.txt");
%! met = 0;
%! for n = 1:numel (exact)
%!   f = exact(n);
%!   allowed = abs (rule(n).p - f.p) <= f.bound / 6;
%!   p = complex (pistonfield (f.points, 0, f.l, f.s, f.k, "cuda", 64));
%!   assert (all (abs (p - f.p)(allowed) <= f.bound(allowed)));
%!   met += sum (allowed);
%! endfor
%! assert (met >= 112);  # of 150
