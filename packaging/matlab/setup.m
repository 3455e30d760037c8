% SETUP  Puts pistonfield on the path, with the module for this computer.
%
%   setup
%
% Uses the first of these modules that computes a pressure: the module for NVIDIA GPUs and the
% module for CPUs in this folder, and the module that setup built here before.  If none does,
% setup builds one.  This requires CMake (3.25 or later), a C++17 compiler and, for a GPU, a
% CUDA toolkit.  CMake's environment variables (CXX, for example) apply.
%
% The path is set until the host ends; savepath keeps it after that.
%
% Errors
%
%   CMake was not found ...
%   No C++ compiler was found ...
%   mkoctfile was not found ...
%       Install the program, or add it to the PATH.
%   The module could not be built ...
%       See the message of CMake or the compiler below.
%   The module that was built does not run ...
%       See the reason in the message.
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

% Returns the build target for this host, and the folder of the module that setup builds.

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

% Adds the modules in place to the path. If they do not run, removes them again and returns the reason.

function problem = problemof (place)

  problem = '';
  forget ();
  addpath (place);
  try
    p = pistonfield_quiet ([0; 0; 1], 0, 1, 1, 1);
    if (exist ('pistonfield') ~= 3 || ~ (abs (p) > 0))
      problem = 'it returns no pressure';
    end
  catch failure
    problem = failure.message;
  end
  if (~ isempty (problem))
    forget ();
    rmpath (place);
  end

end

% Unloads the modules, which the host would otherwise keep.

function forget ()

  clear pistonfield pistonfield_quiet pistonfield_about pistonfield_pressure;

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
    error ('setup:cmake', ['CMake was not found. This archive has no module for this computer, and ' ...
                           'building one requires CMake (3.25 or later) on the PATH.']);
  end
  fprintf ('This archive has no module for this computer. Building one in\n%s\n', place);

  options = '';
  if (~ isoctave ())
    options = [' -D PISTONFIELD_MATLAB=ON -D ', quoted(['Matlab_ROOT_DIR=', matlabroot()])];
  end
  configure = sprintf ('cmake -S %s -B %s -D CMAKE_BUILD_TYPE=Release -D BUILD_TESTING=OFF%s', ...
                       quoted (source), quoted (place), options);
  [status, output] = run_ (configure);
  if (status ~= 0 && ~ isempty (strfind (output, 'CMAKE_CXX_COMPILER')))
    error ('setup:compiler', 'No C++ compiler was found. CMake''s output:\n%s', output);
  elseif (~ isempty (strfind (output, 'mkoctfile was not found')))
    error ('setup:mkoctfile', ...
           'mkoctfile was not found. It comes with Octave''s development files (octave-dev).');
  elseif (status == 0)
    [status, output] = run_ (sprintf ('cmake --build %s --config Release --parallel --target %s', ...
                                    quoted (place), host));
  end
  if (status ~= 0)
    error ('setup:build', 'The module could not be built:\n%s', output);
  end

end

% Quotes a word for the command line.

function word = quoted (word)

  if (ispc ())
    word = ['"', word, '"'];                % file names cannot contain quotation marks there
  else
    word = ['''', strrep(word, '''', '''\'''''), ''''];
  end

end

function [status, output] = run_ (command)

  if (isunix () && ~ isoctave ())
    command = ['env LD_LIBRARY_PATH= ', command]; % other programs must not load MATLAB's libraries
  end
  [status, output] = system ([command, ' 2>&1']);

end
