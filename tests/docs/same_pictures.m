% same_pictures (committed, drawn): fails unless both folders, and their subfolders figures, have the same PNG
% files, apart from those that show measurements. Pixels may differ by rounding.
function same_pictures (committed, drawn)
  measured = {"accuracy.png", "performance.png"};
  stale = {};
  compared = 0;
  for folder = {"", "figures"}
    names = @(root) {dir(fullfile (root, folder{1}, "*.png")).name};
    expected = setdiff (names (committed), measured);
    both = intersect (expected, names (drawn));
    stale = [stale, setxor(expected, names (drawn))];
    for name = both(:)'
      old = imread (fullfile (committed, folder{1}, name{1}));
      new = imread (fullfile (drawn, folder{1}, name{1}));
      if (! isequal (size (old), size (new)))
        share = 1;
      else
        share = mean (any (abs (double (old) - double (new)) > 16, 3)(:));
      endif
      printf ("%-20s %.2g of the pixels differ\n", name{1}, share);
      if (share > 1e-4)
        stale{end+1} = name{1};
      endif
      compared++;
    endfor
  endfor
  if (! isempty (stale) || compared == 0)
    error ("not the pictures that are drawn today: %s", strjoin (stale, ", "));
  endif
endfunction
