% writewhole (file, contents)
%
% Writes the fields of a struct to a MAT file. The file gets its name only when it is complete, so a killed
% process or a full disk leaves no damaged file. writewhole reads the file back, since not every host reports
% a full disk. The file is not compressed, since compression would take longer than the computation.

function writewhole (file, contents)

  temporary = [tempname(fileparts (file)), '.tmp'];
  remove = onCleanup (@() deleteleftover (temporary));
  save (temporary, '-struct', 'contents', '-v6');
  try
    whole = isequaln (load (temporary, '-mat'), contents);
  catch
    whole = false;
  end
  if (~ whole)
    error ('writewhole:write', '%s could not be written: is the disk full?', file);
  end
  [done, message] = movefile (temporary, file, 'f');
  if (~ done)
    error ('writewhole:write', '%s: %s', file, message);
  end

end

function deleteleftover (file)

  if (exist (file, 'file'))
    delete (file);
  end

end
