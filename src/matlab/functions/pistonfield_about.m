% PISTONFIELD_ABOUT  Facts about the compiled modules behind pistonfield.
%
%   about = pistonfield_about ()
%
% For pistoninfo.

function about = pistonfield_about ()

  about = pistonfield ();  % runs only if the compiled module is missing; raises that error

end
