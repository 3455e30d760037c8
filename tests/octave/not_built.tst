%!test # without the module, the help is available, and the error of a call explains what is missing
%! assert (exist ("pistonfield"), 2);
%! try
%!   p = pistonfield (ones (3, 1), 0, 1, 1, 1);
%!   error ("it ran");
%! catch failure
%!   assert (failure.identifier, "pistonfield:notBuilt");
%!   assert (strncmp (failure.message, "pistonfield is not built", 24));
%! end_try_catch
%! assert (! isempty (strfind (evalc ("help pistonfield"), "Gauss-Legendre")));
