%!test # without a GPU the CUDA module reports the failed start-up check, and the host continues
%! report = ["^ERROR: assertion failure in src/core/cuda_init at line (14|16)\n" ...
%!           "       condition failed: \\([^\n]+\\)\\.\n"];
%! for n = 1:3
%!   message = message_of ([0; 0; 0.01], 0, 0.01, 0.005, 4188.79);
%!   assert (! isempty (regexp (message, report)), message);
%! endfor
%! assert (1 + 1, 2);
%!test # pistoninfo reports why there is no device
%! info = pistoninfo ();
%! assert (! isempty (regexp (info.device, '^none: \w+')), info.device);
%! assert (info.instructions, "CUDA");
%!test # pressures for a tolerance need no GPU
%! assert (pistongrid (0, 0, 0.005, 0.01, 0.005, 4188.79), -1.4349405557124149 + 0.7410821519076099i, 2e-4);
