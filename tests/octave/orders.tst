%!test # pistonorder meets its tolerance on grids, clouds and points as seen from elements of arrays
%! [worst, refused] = order_sweep (1:20, 20000);
%! assert (worst < 1);
%! assert (refused < 6);
%!test # pistongrid keeps its tolerances
%! [worst, against] = tolerance_sweep ("grid", 1:40, 30000);
%! assert (all (worst < 1));
%! assert (against(1) > 30 && against(2) > 10);
%!test # pistonarray keeps its tolerances
%! [worst, against] = tolerance_sweep ("array", 1:40, 4000);
%! assert (all (worst < 1));
%! assert (against(1) > 10 && against(2) > 3);
