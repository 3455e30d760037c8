#!/usr/bin/env bash
#SBATCH --job-name=pistonfield
#SBATCH --array=0-7
#SBATCH --cpus-per-task=16
#SBATCH --time=01:00:00
#
# One part of a field in each job of an array, from the root of the sources:
#
#   mkdir /scratch/me/field
#   sbatch examples/cluster/slurm.sh build/auto/octave /scratch/me/field
#   octave-cli --eval "addpath examples/cluster; joinparts ('/scratch/me/field');"      when all are done
#
# Parts that are missing, the fourth of eight say (counted from 0, as arrays are):
#
#   PARTS=8 sbatch --array=3 examples/cluster/slurm.sh build/auto/octave /scratch/me/field
#
# A module for GPUs takes the first that it sees. With "#SBATCH --gpus-per-task=1" Slurm shows each job
# one; where processes share a node without that, show each its own before it starts:
#
#   export CUDA_VISIBLE_DEVICES=$SLURM_LOCALID
set -euo pipefail
(($# == 2)) || { echo "usage: sbatch slurm.sh <folder of the module> <folder of the parts>" >&2; exit 2; }
export PISTONFIELD_MODULE=$1 PISTONFIELD_PARTS=$2

if [[ ${PARTS-} ]]; then export SLURM_ARRAY_TASK_MIN=0 SLURM_ARRAY_TASK_COUNT=$PARTS; fi

octave-cli --no-history --norc --quiet --eval "
  addpath (getenv ('PISTONFIELD_MODULE'), 'examples/cluster');
  computepart (getenv ('PISTONFIELD_PARTS'));"
