% octave-cli matlab.m <folder of the archive> <folder of a module of the same sources> <expected place>
%
% Runs setup of the archive and checks that it chose the module in the expected place, a path relative to
% the archive's folder, and that this module gives the same results as the other one.

[folder, built, place] = argv (){:};
call = @() [pistonfield([1, -3; 2, 4; 3, 5], 0, 7.5, 5, 2, "cuda", 30), pistonarray([1, -3; 2, 4; 3, 5], ...
            struct ("l", 7.5, "s", 5, "positions", [1; 2; 3]), 2)];
addpath (built);
expected = call ();
clear pistonfield pistonfield_quiet pistonfield_pressure pistonarray
rmpath (built);

cd (folder);
said = evalc ("setup");
printf ("%s", said);
assert (! isempty (strfind (said, "savepath")));
assert (fileparts (which ("pistonfield")), fullfile (folder, place));
assert (exist ("pistonfield"), 3);
assert (call (), expected);
cd ("..");
assert (call (), expected);
assert (! isempty (strfind (get_help_text ("pistonfield"), "Gauss-Legendre")));
