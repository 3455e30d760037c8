% Runs an example in the current folder and checks its picture: the struct of its variables, and in
% printed what it printed.
function variables = run_example (example_)
  printed_ = evalc (example_);
  variables.printed = printed_;
  for name_ = who ("-regexp", "[^_]$")'
    if (! strcmp (name_{1}, "variables"))
      variables.(name_{1}) = eval (name_{1});
    endif
  endfor
  check_picture ([example_, ".png"]);
endfunction

% A PNG file, of a size that the documentation can show, on which something is drawn.
function check_picture (name)
  file = fopen (name);
  signature = fread (file, 8)';
  fclose (file);
  assert (signature, [137, 80, 78, 71, 13, 10, 26, 10]);
  assert (stat (name).size < 150e3);
  pixels = reshape (imread (name), [], 3);
  assert (rows (pixels) >= 600 * 500);
  colours = unique (pixels, "rows");
  assert (rows (colours) > 20);
  white = mean (all (pixels == 255, 2));
  assert (white > 0.1 && white < 0.98);
  shown = imfinfo (fullfile (fileparts (which ("run_blocks")), "../../docs/figures", name));
  assert (shown.Width * shown.Height, rows (pixels));
endfunction
