% PISTONFIELD_ABOUT  What the modules behind pistonfield say of themselves.
%
%   about = pistonfield_about ()
%
% For pistoninfo.

function about = pistonfield_about ()

  about = pistonfield ();  % only where the compiled module is missing: it says so

end
