%!function values = wild () # values by name, most of them invalid as arguments of these functions
%!  values = {"a", "", "abc", {}, {1}, struct(), struct("a", {1, 2}), @sin, @(x) x, containers.Map(), ...
%!            true, NaN, Inf, -Inf, 0, -1, 1.5, 1e300, 513, 1i, [], zeros(3, 0), zeros(0, 2), [1, 2], [1; 2], ...
%!            [1; 2; 3], eye(3), ones(2, 2, 2), ones(3, 3, 2), ones(600, 2), [NaN; 0; 1], ...
%!            single(2), int8(3), uint64(7), int32([1, 2]), sparse(2), sparse([1, 2]), 1:3, complex(1, 0)};
%!endfunction

%!function complain (name, arguments, failure) # fails unless the message explains the mistake in the user's terms
%!  own = ['^((Too few|Wrong number of) arguments|After k, pass|Pass an order or|x, y and z must be|points must be|array[. ]|' ...
%!         '[lsk] must be|k has a positive|The attenuation must be|nabscissas must be|quantity must be|limits must be|p must have|order must be|' ...
%!         '[a-z]+: function called with too many inputs|x and w must be|tolerance must be|Sides must be|points must include|No order up to|' ...
%!         '(counts?|pitch|pitches|radius|focus|name|parameter|x|p|P|v|rho|c|f|coefficient|exponent|drop) must be|' ...
%!         'After excitation, only|Pass a rate or|(medium|excitation)( must|: [a-z]+ must| has an unknown)|' ...
%!         '(times|rate|cycles|bandwidth|window) must be|The tolerance of a pulse|There are more (times|pressures) than|Piston \d+: |' ...
%!         'The (times are too far|wavelength must|pulse lasts too long|speed of sound in|attenuation of the|exponent of the|reference)|' ...
%!         'The (rate|samples?|start) of the (excitation|times)|The excitation (must have|has)|From the first wave|For the exponent 3|At the frequency|In this medium|' ...
%!         'After limits, only|axes must be|A point is farther than|pistonfield_quiet: (Input must be|Points \(argument 1\)|The given grid)|' ...
%!         'array\.[a-z]+(\(:,:,\d\))? must (be|have)|pistonfield_pressure: (There is not enough memory|Wrong arguments. Call pistongrid or pistonarray|k must be|k has a positive|The (attenuation|tolerance|order) must be|Piston \d+: ))'];
%!  if (isempty (regexp (failure.message, own)))
%!    error ("%s (%s) says: %s", name, disp (arguments), failure.message);
%!  endif
%!endfunction

%!function [fine, refused] = sweep (name, good)
%!  fine = refused = 0;
%!  for n = 1:numel (good) + 1   # including one argument too many
%!    for value = wild ()
%!      arguments = good;
%!      arguments(n) = value;
%!      try
%!        result = feval (name, arguments{:});
%!        ++fine;
%!      catch failure
%!        complain (name, arguments, failure);
%!        ++refused;
%!      end_try_catch
%!    endfor
%!    assert (! isempty (feval (name, good{:})));
%!  endfor
%!  for n = 0:numel (good) - 1
%!    try
%!      result = feval (name, good{1:n});
%!    catch failure
%!      complain (name, good(1:n), failure);
%!    end_try_catch
%!  endfor
%!endfunction

%!function sweep_fields (call, good) # each field of a struct left out, and with each value
%!  for field = fieldnames (good)'
%!    for value = [wild(), ones(3, 3)]
%!      other = good;
%!      other.(field{1}) = value{1};
%!      try
%!        assert (size (call (other)), [1, 1]);
%!      catch failure
%!        complain ("a struct", {field{1}, value{1}}, failure);
%!      end_try_catch
%!    endfor
%!  endfor
%!endfunction

%!shared array
%! array = struct ("l", 2, "s", 1, "positions", [0, 3; 0, 0; 0, 0]);
%!test
%! [fine, refused] = sweep ("pistongrid", {0, 0, [1, 2], 2, 1, 3, 10});
%! assert (fine > 60 && refused > 150);
%! [fine, refused] = sweep ("pistongrid", {0, 0, [1, 2], 2, 1, 3, [], "tolerance", 1e-3, "quiet"});
%! assert (fine > 60 && refused > 300);
%!test
%! [fine, refused] = sweep ("pistonarray", {[0; 0; 1], array, 3, 10});
%! assert (fine > 15 && refused > 130);
%! [fine, refused] = sweep ("pistonarray", {[0; 0; 1], array, 3, [], "tolerance", 1e-3});
%! assert (fine > 8 && refused > 230);
%! [fine, refused] = sweep ("pistonarray", {{0, 0, 1}, array, 3, "quiet"});
%! assert (fine > 12 && refused > 150);
%!test # every field
%! for steering = {"steer", "focus"}
%!   whole = array;
%!   whole.rotations = eye (3);
%!   whole.weights = [1, 1i];
%!   whole.(steering{1}) = [0; 0; 1];
%!   sweep_fields (@(array) pistonarray ([0; 0; 1], array, 3), whole);
%! endfor
%!test # the module behind pistongrid and pistonarray
%! pistons = struct ("widths", [1; 2], "heights", [3; 4], "centres", zeros (3, 2), "axes", repmat (eye (3), [1, 1, 2]), "weights", [1; 2i]);
%! [fine, refused] = sweep ("pistonfield_pressure", {[0; 0; 1], pistons, 2, 1e-3, []});
%! assert (fine > 5 && refused > 100);
%! sweep_fields (@(pistons) pistonfield_pressure ([0; 0; 1], pistons, 2, 1e-3, []), pistons);
%! for field = fieldnames (pistons)'
%!   fail ("pistonfield_pressure ([0; 0; 1], rmfield (pistons, field{1}), 2, 1e-3, [])", "Wrong arguments");
%! endfor
%! fail ("[p, used, more] = pistonfield_pressure ([0; 0; 1], pistons, 2, 1e-3, [])", "Wrong arguments|called with too many outputs");
%!test
%! [fine, refused] = sweep ("pistonrule", {[-0.5, 0.5], [1, 1]});
%! assert (refused > 90);
%! [fine, refused] = sweep ("pistonrule", {10});
%! assert (fine > 3 && refused > 60);
%!test
%! [fine, refused] = sweep ("pistonorder", {[0; 0; 1], 1, 1, 1, 1e-3});
%! assert (fine > 25 && refused > 120);
%! [fine, refused] = sweep ("pistonorder", {[0; 0; 1], array, 3, 1e-3});
%! assert (fine > 10 && refused > 100);
%!test
%! warning ("off", "Octave:gnuplot-graphics", "local");
%! graphics_toolkit ("gnuplot");
%! f = figure ("visible", "off");
%! unwind_protect
%!   [fine, refused] = sweep ("pistonplot", {[0, 1], 0, [0, 1], ones(2), "linear", [0, 1]});
%! unwind_protect_cleanup
%!   close (f);
%! end_unwind_protect
%! assert (fine > 5 && refused > 200);
%!test # arrays and weights
%! [fine, refused] = sweep ("pistonlinear", {4, 3, 2, 1});
%! assert (fine > 15 && refused > 120);
%! [fine, refused] = sweep ("pistonmatrix", {[4, 2], [3, 4], 2, 1});
%! assert (fine > 15 && refused > 120);
%! [fine, refused] = sweep ("pistonconvex", {4, 3, 20, 2, 1});
%! assert (fine > 20 && refused > 150);
%! [fine, refused] = sweep ("pistonapodization", {"tukey", [4, 2], 0.3});
%! assert (fine > 5 && refused > 100);
%! [fine, refused] = sweep ("pistonapodization", {"hann", 4});
%! assert (fine > 3 && refused > 70);
%! [fine, refused] = sweep ("pistonlens", {array, 3, 2});
%! assert (fine > 10 && refused > 80);
%! [fine, refused] = sweep ("pistonlens", {array, 3, 2, "tolerance", 0.1});
%! assert (fine > 10 && refused > 150);
%!test # pulses
%! burst = pistonburst (1, 2, 20);
%! [fine, refused] = sweep ("pistonburst", {1, 2, 20, "hann"});
%! assert (fine > 5 && refused > 150);
%! [fine, refused] = sweep ("pistongauss", {1, 0.5, 20});
%! assert (fine > 4 && refused > 100);
%! [fine, refused] = sweep ("pistonpulse", {[0; 0; 5], array, 3, burst, "tolerance", 1e-3, "quiet"});
%! assert (fine > 5 && refused > 250);
%! [fine, refused] = sweep ("pistonpulse", {[0; 0; 5], array, 3, burst, "times", [1, 2]});
%! assert (fine > 15 && refused > 200);
%! [fine, refused] = sweep ("pistonpulse", {{0, 0, 5}, array, 3, burst, "rate", 4});
%! assert (fine > 12 && refused > 200);
%! [fine, refused] = sweep ("pistonecho", {[0; 0; 5], array, 3, burst, "receive", array, "quiet"});
%! assert (fine > 6 && refused > 250);
%! whole = setfield (setfield (setfield (array, "delays", [0, 1]), "weights", [1, 2]), "focus", [0; 0; 4]);
%! sweep_fields (@(array) pistonpulse ([0; 0; 5], array, 3, burst, "times", 2), whole);
%! sweep_fields (@(medium) pistonpulse ([0; 0; 5], array, medium, pistonburst (1e3, 2, 2e4), "times", 4e-3), ...
%!               struct ("speed", 1500, "attenuation", 0.5, "exponent", 1, "reference", 1e3));
%! sweep_fields (@(excitation) pistonpulse ([0; 0; 5], array, 3, excitation, "times", 2), burst);
%!test # what is read off fields
%! [fine, refused] = sweep ("pistonbeam", {[1, 2, 3], [0, 1, 0], 6});
%! assert (fine > 10 && refused > 70);
%! [fine, refused] = sweep ("pistonpascals", {1i, 2, 1000, 1500});
%! assert (fine > 40 && refused > 90);
%! [fine, refused] = sweep ("pistonintensity", {1i, 1000, 1500});
%! assert (fine > 40 && refused > 60);
%! [fine, refused] = sweep ("pistonattenuation", {0.5, 1e6, 1});
%! assert (fine > 30 && refused > 70);
%! [fine, refused] = sweep ("pistonpeaks", {[1, -2, 3]});
%! assert (fine > 15 && refused > 40);
