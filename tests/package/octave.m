% octave-cli octave.m <tarball> <prefix> <revision> <folder of a module of the same sources> <pictures>
%
% Does what a user does with the Octave package, from pkg install to pkg uninstall. These arguments may
% be "": prefix, an empty folder to install to, which means pkg's default; the folder of the module,
% which means no comparison; and pictures, the folder for the pictures of the demos, which means no
% demos.

[tarball, prefix, revision, built, pictures] = argv (){:};
modules = {"pistonfield", "pistonfield_quiet", "pistonfield_about", "pistonfield_pressure"};
points = [-6, 0, 1, 4; 0, 2, -3, 1; 5, 1, 20, 60];

function p = pressures (points)
  p = [pistonfield(points, 0, 7.5, 5, 2, "cuda", 30), pistonfield_quiet(points, 0, 7.5, 5, 2)];
endfunction

function check_exist (names, kind)
  for name = names
    assert (exist (name{1}), kind, name{1});
  endfor
endfunction

function picture_of_demo (name, folder)
  demo (name);
  file = fullfile (folder, [name, ".png"]);
  print (file, "-dpng", "-S800,600");
  close all
  picture = double (imread (file));
  coloured = max (picture, [], 3) - min (picture, [], 3) > 50;   # axes and texts are not coloured
  assert (sum (coloured(:)) > 500, name);
endfunction

if (! isempty (prefix))
  pkg ("prefix", fullfile (prefix, "packages"), fullfile (prefix, "modules"));
  pkg ("local_list", fullfile (prefix, "local_list"));
  pkg ("global_list", fullfile (prefix, "global_list"));
endif
if (! isempty (built))
  addpath (built);
  expected = pressures (points);
  clear pistonfield pistonfield_quiet
  rmpath (built);
endif
check_exist (modules, 0);

pkg ("install", tarball);
installed = pkg ("list", "pistonfield"){1};
assert ([installed.name, "-", installed.version, ".tar.gz"], regexprep (tarball, '.*/', ''));
check_exist (modules, 0);

pkg load pistonfield
files = glob (fullfile (installed.dir, "*.m"));
[~, functions] = cellfun (@fileparts, files', "uniformoutput", false);
assert (numel (functions) > numel (modules));
check_exist (modules, 3);
check_exist (setdiff (functions, modules), 2);
for name = modules
  assert (strncmp (which (name{1}), installed.archprefix, numel (installed.archprefix)), name{1});
endfor

% The index lists every function.
categories = pkg ("describe", "pistonfield"){1}.provides;
listed = cellfun (@(category) category.functions, categories, "uniformoutput", false);
assert (sort ([listed{:}]), sort (setdiff (functions, modules(2:end))));

for name = functions
  [help_, form] = get_help_text (name{1});
  assert (form, "plain text");
  assert (! isempty (strfind (help_, upper (name{1}))));
endfor
[passed, all_] = test ("pistonfield", "quiet");
assert (passed, all_);
assert (all_ > 1);

info = pistoninfo ();
version_ = sprintf ("pistonfield %s, revision %s", installed.version, revision);
assert (info.version, version_);
assert (! isempty (strfind (evalc ("pistonfield ('info')"), revision)));

p = pressures (points);
if (! isempty (built))
  assert (p, expected);
endif
assert (squeeze (pistongrid (1, -3, 20, 7.5, 5, 2, 10)), p(3,2));
array = struct ("l", 7.5, "s", 5, "positions", [0; 0; 0]);
assert (pistonarray (points, array, 2, 10), p(:,2));

if (! isempty (pictures))
  warning ("off", "Octave:gnuplot-graphics");
  graphics_toolkit ("gnuplot");
  set (0, "defaultfigurevisible", "off");
  for name = {"pistonfield", "pistongrid", "pistonplot", "pistonarray"}
    picture_of_demo (name{1}, pictures);
  endfor
endif

pkg unload pistonfield
check_exist ([modules, functions], 0);

pkg uninstall pistonfield
assert (isempty (pkg ("list", "pistonfield")));
assert (! isfolder (installed.dir) && ! isfolder (installed.archprefix));
printf ("the package was installed, used and uninstalled\n");
