%!test # in front of pistons and behind them, where often no order is sufficient
%! [worst, refused] = order_sweep ("lists", 1001:2000, 40000);
%! printf ("pistonorder: worst error %.3g of its tolerance; no order in %d of 3000 calls\n", worst, refused);
%! assert (worst < 1);
%! assert (refused < 150);
%!test
%! [worst, refused] = order_sweep ("grids", 1001:2000, 60000);
%! printf ("pistongrid: worst error %.3g of 1e-4; no order in %d of 1000 calls\n", worst, refused);
%! assert (worst < 1);
%! assert (refused, 0);
%!test # some points of bowls lie behind elements
%! [worst, refused] = order_sweep ("arrays", 1001:2000, 6000);
%! printf ("pistonarray: worst error %.3g of 1e-4; no order in %d of 1000 calls\n", worst, refused);
%! assert (worst < 1);
%! assert (refused < 20);
