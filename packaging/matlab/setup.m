% SETUP  Puts pistonfield on the path, with the module for this computer.
%
%   setup
%
% Takes the first of these that gives the pressure at a point: the module for NVIDIA GPUs and
% the one for CPUs that came with this folder, and the one that setup built here before.
% Where none does, it builds one, which takes CMake (3.25 or later) and a C++17 compiler, and
% for a GPU a CUDA toolkit.  The environment variables of CMake, CXX say, are heeded.
%
% The path is set until the host ends; savepath keeps it for later.
%
% Errors
%
%   CMake was not found ...
%   No C++ compiler was found ...
%   mkoctfile was not found ...
%       What is named is missing, or not on the PATH.
%   The module could not be built ...
%       For the reason that CMake or the compiler gives below.
%   The module that was built does not run ...
%       For the reason that it gives.
%
% See also: pistonfield, pistoninfo.

function setup ()

  folder = fileparts (mfilename ('fullpath'));
  addpath (folder);

  [host, built] = targets (folder);
  places = {fullfile(folder, 'modules', 'cuda'), fullfile(folder, 'modules', 'emulation'), built};
  for n = 1:numel (places)
    if (~ isempty (dir (fullfile (places{n}, ['pistonfield.', mexext()]))))
      problem = problemof (places{n});
      if (isempty (problem))
        report (places{n});
        return;
      end
      fprintf ('Not usable here: %s\n  %s\n', places{n}, problem);
    end
  end

  build (folder, host);
  problem = problemof (built);
  if (~ isempty (problem))
    error ('setup:module', 'The module that was built does not run: %s', problem);
  end
  report (built);

end

% The host's name among the targets of the build, and the folder of what is built for it.

function [host, built] = targets (folder)

  host = 'matlab';
  if (isoctave ())
    host = 'octave';
  end
  built = fullfile (folder, 'build', host);

end

function answer = isoctave ()

  answer = exist ('OCTAVE_VERSION', 'builtin') ~= 0;

end

% Puts the modules of the place on the path; where they do not run, takes them off again and says
% why.

function problem = problemof (place)

  problem = '';
  forget ();
  addpath (place);
  try
    p = pistonfield_quiet ([0; 0; 1], 0, 1, 1, 1);
    if (exist ('pistonfield') ~= 3 || ~ (abs (p) > 0))
      problem = 'it gives no pressure';
    end
  catch failure
    problem = failure.message;
  end
  if (~ isempty (problem))
    forget ();
    rmpath (place);
  end

end

% Lets go of modules that are loaded, which hosts keep otherwise.

function forget ()

  clear pistonfield pistonfield_quiet pistonfield_about;

end

function report (place)

  info = pistoninfo ();
  fprintf ('pistonfield runs on: %s\n', info.device);
  fprintf ('with the module in:  %s\n', place);
  fprintf ('savepath keeps the path for later sessions.\n');

end

function build (folder, host)

  source = fullfile (folder, 'source');
  place = fullfile (folder, 'build');
  if (run_ ('cmake --version') ~= 0)
    error ('setup:cmake', ['CMake was not found. There is no module for this computer here, and ' ...
                           'building one takes CMake (3.25 or later) on the PATH.']);
  end
  fprintf ('There is no module for this computer here. Building one in\n%s\n', place);

  options = '';
  if (~ isoctave ())
    options = [' -D PISTONFIELD_MATLAB=ON -D ', quoted(['Matlab_ROOT_DIR=', matlabroot()])];
  end
  configure = sprintf ('cmake -S %s -B %s -D CMAKE_BUILD_TYPE=Release -D BUILD_TESTING=OFF%s', ...
                       quoted (source), quoted (place), options);
  [status, said] = run_ (configure);
  if (status ~= 0 && ~ isempty (strfind (said, 'CMAKE_CXX_COMPILER')))
    error ('setup:compiler', 'No C++ compiler was found. CMake says:\n%s', said);
  elseif (~ isempty (strfind (said, 'mkoctfile was not found')))
    error ('setup:mkoctfile', ...
           'mkoctfile was not found. It comes with Octave''s development files (octave-dev).');
  elseif (status == 0)
    [status, said] = run_ (sprintf ('cmake --build %s --config Release --parallel --target %s', ...
                                    quoted (place), host));
  end
  if (status ~= 0)
    error ('setup:build', 'The module could not be built:\n%s', said);
  end

end

% One word of a command line, whatever characters it has.

function word = quoted (word)

  if (ispc ())
    word = ['"', word, '"'];                % which no name of a file has there
  else
    word = ['''', strrep(word, '''', '''\'''''), ''''];
  end

end

function [status, said] = run_ (command)

  if (isunix () && ~ isoctave ())
    command = ['env LD_LIBRARY_PATH= ', command]; % MATLAB's own libraries are not for other programs
  end
  [status, said] = system ([command, ' 2>&1']);

end
