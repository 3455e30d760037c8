% octave-cli tests/octave/run_blocks.m <folder of the module> <test file> <needs>
%
% Runs the %! blocks of a test file and ends with status 1 if one fails. The tests need a "device",
% "no-device" or "nothing". If the need is not met, the tests are skipped, with status 77.

folder = fileparts (mfilename ("fullpath"));
addpath (argv (){1}, folder);
if (! strcmp (argv (){3}, "nothing"))
  message = message_of ([0; 0; 1], 0, 1, 1, 1);
  has_device = isempty (strfind (message, "src/core/cuda_init"));
  if (has_device == strcmp (argv (){3}, "no-device"))
    printf ("SKIPPED: needs %s\n", argv (){3});
    exit (77);
  endif
endif

[passed, all, ~, ~, skipped] = test (argv (){2}, "quiet", stdout);
printf ("%d of %d blocks passed, %d skipped\n", passed, all, skipped);
exit (double (passed + skipped != all || all == 0));
