%!shared e, mat, vtk
%! e = run_example ("volume", 200);
%! mat = load ("volume.mat");
%! vtk = read_vtk ("volume.vtk");
%!test # the MAT file has a widely supported format and contains everything
%! file = fopen ("volume.mat");
%! assert (strncmp (fread (file, 20, "char=>char")', "MATLAB 5.0 MAT-file", 19));
%! fclose (file);
%! for name = {"x", "y", "z", "l", "s", "k", "p"}
%!   assert (isequal (mat.(name{1}), e.(name{1})));
%! endfor
%!test # the VTK file contains everything in single precision
%! assert (vtk.dimensions, [61, 61, 100]);
%! assert (vtk.origin, [-9e-3, -9e-3, 0.3e-3], 1e-9);
%! assert (vtk.spacing, [0.3e-3, 0.3e-3, 0.3e-3], 1e-9);
%! assert (isequal (vtk.magnitude, double (single (abs (mat.p)))));
%! assert (isequal (vtk.real + 1i * vtk.imaginary, double (single (mat.p))));
%!test # a reader of either file finds a value at the right place
%! for at = [10, 61, 31; 47, 1, 20; 3, 55, 100]
%!   place = vtk.origin + (at' - 1) .* vtk.spacing;
%!   p = rayleigh_sum (place', 11.25e-3, 7.5e-3, 2 * pi / 1.5e-3, 200);
%!   assert (vtk.real(at(1),at(2),at(3)) + 1i * vtk.imaginary(at(1),at(2),at(3)), p, 1e-3);
%!   assert ([mat.x(at(1)), mat.y(at(2)), mat.z(at(3))], place, 1e-9);
%! endfor
%!test # an axis of one value
%! writevtk ("plane.vtk", "a plane", [1, 2], 5, [0, 3, 6], "a", ones (2, 1, 3));
%! plane = read_vtk ("plane.vtk");
%! assert ({plane.dimensions, plane.origin, plane.spacing}, {[2, 1, 3], [1, 5, 0], [1, 1, 3]});
%!error <must be evenly spaced> writevtk ("no.vtk", "t", [1, 2, 4], 1, 1, "a", [1, 2, 3])
%!error <a must have one real value> writevtk ("no.vtk", "t", [1, 2, 3], 1, 1, "a", [1, 2, 3i])
%!error <a must have one real value> writevtk ("no.vtk", "t", [1, 2, 3], 1, 1, "a", [1, 2])
%!error <no/no.vtk: > writevtk ("no/no.vtk", "t", [1, 2, 3], 1, 1, "a", [1, 2, 3])
%!error <could not be written> writevtk ("/dev/full", "t", 1:1e5, 1, 1, "a", 1:1e5)
