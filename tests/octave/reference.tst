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

%!test # a table in the layout that the module reads gives the same values as its order
%! x{4} = [-0.86113631159405257522, -0.33998104358485626480];
%! w{4} = [0.34785484513745385737, 0.65214515486254614263];
%! x{5} = [-0.90617984593866399280, -0.53846931010568309104, 0];
%! w{5} = [0.23692688505618908751, 0.47862867049936646804, 0.56888888888888888889];
%! points = [0 0.001 0.02 0.004; 0 0.002 0.01 -0.003; 0.01 0.02 0.03 0.001];
%! for M = [4 5]
%!   table = NaN (M, 2);
%!   pairs = [x{M}; w{M}];
%!   table(1:numel (pairs)) = pairs(:);
%!   by_table = pistonfield (points, 0, 0.01, 0.005, 4188.79, "cuda", table);
%!   by_order = pistonfield (points, 0, 0.01, 0.005, 4188.79, "cuda", M);
%!   assert (by_table, by_order);
%! endfor
