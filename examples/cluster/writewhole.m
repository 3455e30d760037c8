% writewhole (file, contents)
%
% Writes the fields of a struct to a MAT file that has its name only when it is whole: a process that is
% killed, or a full disk, leaves none. It is read again, because not every host says that a disk is full.
% Not compressed, which would take longer than the computing.

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
