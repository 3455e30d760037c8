% Runs an example in the current folder and checks that its picture has at least the given number of
% colours. Returns a struct of its variables, and in printed what it printed.
function variables = run_example (example_, colours_)
  printed_ = evalc (example_);
  variables.printed = printed_;
  for name_ = who ("-regexp", "[^_]$")'
    if (! strcmp (name_{1}, "variables"))
      variables.(name_{1}) = eval (name_{1});
    endif
  endfor
  check_picture ([example_, ".png"], colours_);
endfunction

% A PNG file with the size of those in the documentation, and with something drawn on it.
function check_picture (name, colours)
  file = fopen (name);
  signature = fread (file, 8)';
  fclose (file);
  assert (signature, [137, 80, 78, 71, 13, 10, 26, 10]);
  assert (stat (name).size < 150e3);
  pixels = reshape (imread (name), [], 3);
  assert (rows (pixels) >= 600 * 500);
  assert (rows (unique (pixels, "rows")) >= colours);
  white = mean (all (pixels == 255, 2));
  assert (white > 0.1 && white < 0.98);
  shown = imfinfo (fullfile (fileparts (which ("run_blocks")), "../../docs/figures", name));
  assert (shown.Width * shown.Height, rows (pixels));
endfunction
