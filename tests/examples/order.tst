%!shared e
%! e = run_example ("order", 20);
%!test # the errors decrease with the order, down to the limit of single precision
%! assert (all (e.errors(:,1) > 0.1) && all (e.errors(:,end) < 1e-6));
%! assert (all (e.errors(1:2,e.orders == 14) < 1e-6) && e.errors(3,e.orders == 14) > 0.1);
%!test # pistonorder returns the first order within the tolerance
%! for c = 1:3
%!   first = e.orders(find (e.errors(c,:) < e.tolerance, 1));
%!   assert (e.enough(c), first);
%! endfor
%!test # the errors agree with those against an evaluation that shares no code with that of an order
%! p = pistonarray (e.points, struct ("l", e.l(3), "s", e.s(3), "positions", [0; 0; 0]), e.k, "tolerance", 1e-9);
%! for n = [e.enough(3), e.enough(3) - 1, 20]
%!   q = pistonfield_quiet (e.points, 0, e.l(3), e.s(3), e.k, "cuda", n);
%!   off = max (abs (q - p)) / max (abs (p));
%!   assert (off, e.errors(3,e.orders == n), 2e-6);
%!   assert ((off < e.tolerance) == (n >= e.enough(3)));
%! endfor
