#!/usr/bin/env bash
#SBATCH --job-name=pistonfield
#SBATCH --array=0-7
#SBATCH --cpus-per-task=16
#SBATCH --time=01:00:00
#
# Computes one part of a field in each job of an array. Run it from the root of the sources:
#
#   mkdir /scratch/me/field
#   sbatch examples/cluster/slurm.sh build/auto/octave /scratch/me/field
#   octave-cli --eval "addpath examples/cluster; joinparts ('/scratch/me/field');"      after all jobs
#
# To compute a missing part again, for example the fourth of eight (counted from 0):
#
#   PARTS=8 sbatch --array=3 examples/cluster/slurm.sh build/auto/octave /scratch/me/field
#
# A module for GPUs uses one of the visible GPUs. With "#SBATCH --gpus-per-task=1", Slurm makes one GPU
# visible to each job. If processes share a node without this option, select a GPU for each before it starts:
#
#   export CUDA_VISIBLE_DEVICES=$SLURM_LOCALID
set -euo pipefail
(($# == 2)) || { echo "usage: sbatch slurm.sh <folder of the module> <folder of the parts>" >&2; exit 2; }
export PISTONFIELD_MODULE=$1 PISTONFIELD_PARTS=$2

if [[ ${PARTS-} ]]; then export SLURM_ARRAY_TASK_MIN=0 SLURM_ARRAY_TASK_COUNT=$PARTS; fi

octave-cli --no-history --norc --quiet --eval "
  addpath (getenv ('PISTONFIELD_MODULE'), 'examples/cluster');
  computepart (getenv ('PISTONFIELD_PARTS'));"
