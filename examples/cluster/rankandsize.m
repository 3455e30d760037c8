% [rank, size_] = rankandsize ()
%
% Returns the rank of this process, counted from 0, and the number of processes, from the environment
% variables of the launcher; 0 and 1 without a launcher.
%
%   mpirun of Open MPI      OMPI_COMM_WORLD_RANK, OMPI_COMM_WORLD_SIZE
%   mpirun of MPICH, Intel  PMI_RANK, PMI_SIZE
%   srun of Slurm           SLURM_PROCID, SLURM_NTASKS
%   a job array of Slurm    SLURM_ARRAY_TASK_ID less SLURM_ARRAY_TASK_MIN, SLURM_ARRAY_TASK_COUNT
%
% If each job of an array starts several processes, the ranks are numbered across all jobs, beginning with
% the first job.

function [rank, size_] = rankandsize ()

  rank = 0;
  size_ = 1;
  launchers = {'OMPI_COMM_WORLD_RANK', 'OMPI_COMM_WORLD_SIZE'; 'PMI_RANK', 'PMI_SIZE'; ...
               'SLURM_PROCID', 'SLURM_NTASKS'};
  for n = 1:size (launchers, 1)
    if (~ isempty (getenv (launchers{n,1})))
      [rank, size_] = pair (number (launchers{n,1}), number (launchers{n,2}));
      break;
    end
  end

  if (~ isempty (getenv ('SLURM_ARRAY_TASK_ID')))
    first = 0;
    if (~ isempty (getenv ('SLURM_ARRAY_TASK_MIN')))
      first = number ('SLURM_ARRAY_TASK_MIN');
    end
    [job, jobs] = pair (number ('SLURM_ARRAY_TASK_ID') - first, number ('SLURM_ARRAY_TASK_COUNT'));
    rank = job * size_ + rank;
    size_ = jobs * size_;
  end

end

function value = number (name)

  text = getenv (name);
  value = str2double (text);
  if (~ isreal (value) || ~ (value >= 0) || value ~= floor (value))
    error ('rankandsize:environment', '%s is "%s"; it must be a non-negative integer.', name, text);
  end

end

function [rank, size_] = pair (rank, size_)

  if (~ (rank >= 0 && rank < size_))
    error ('rankandsize:environment', 'There is no process %d of %d, counted from 0.', rank, size_);
  end

end
