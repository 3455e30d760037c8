%!test # pistonorder meets its tolerance on grids, clouds and points as seen from elements of arrays
%! [worst, refused] = order_sweep ("lists", 1:20, 20000);
%! assert (worst < 1);
%! assert (refused < 6);
%!test # the order that pistongrid chooses meets the tolerance
%! [worst, refused] = order_sweep ("grids", 1:20, 30000);
%! assert (worst < 1);
%! assert (refused, 0);
%!test # the order that pistonarray chooses meets the tolerance
%! [worst, refused] = order_sweep ("arrays", 1:20, 4000);
%! assert (worst < 1);
%! assert (refused < 2);
