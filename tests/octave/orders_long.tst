%!test # in front of pistons and behind them, where often no order is sufficient
%! [worst, refused] = order_sweep (1001:2000, 40000);
%! printf ("pistonorder: worst error %.3g of its tolerance; no order in %d of 3000 calls\n", worst, refused);
%! assert (worst < 1);
%! assert (refused < 150);
%!test
%! [worst, against] = tolerance_sweep ("grid", 1001:2000, 60000);
%! printf ("pistongrid: worst errors %.3g, %.3g, %.3g of their tolerances\n", worst);
%! assert (all (worst < 1));
%! assert (against(1) > 800 && against(2) > 200);
%!test # some points of bowls lie behind elements
%! [worst, against] = tolerance_sweep ("array", 1001:2000, 6000);
%! printf ("pistonarray: worst errors %.3g, %.3g, %.3g of their tolerances\n", worst);
%! assert (all (worst < 1));
%! assert (against(1) > 300 && against(2) > 60);
