#!/usr/bin/env bash
# mpi.sh <octave-cli> <folder of the module>
#
# Computes a field in one process, in two and three processes of mpirun, and in three jobs of a job array run
# by hand. The values must agree bit for bit, and an incomplete field must not be joined.
set -euo pipefail
octave=$1 module=$2
cd "$(dirname "$0")/../.."

command -v mpirun >/dev/null || { echo "SKIPPED: needs mpirun"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
launcher=(mpirun --oversubscribe)
if ((EUID == 0)); then launcher+=(--allow-run-as-root); fi
mkdir "$work"/{one,two,three,array,refused,bin}
ln -s "$(command -v "$octave")" "$work/bin/octave-cli"
export PATH=$work/bin:$PATH

run=("$octave" --no-history --norc --quiet --path "$module:examples/cluster" --eval)
part() { # <launcher>... <folder>
  "${@:1:$#-1}" "${run[@]}" "computepart ('${*: -1}');"
}
join() { # <folder>
  "${run[@]}" "joinparts ('$1');"
}
fails() { # <text> <command>...
  local said
  if said=$("${@:2}" 2>&1); then echo "no error: ${*:2}"; return 1; fi
  [[ $said == *"$1"* ]] || { echo "not \"$1\": $said"; return 1; }
}

part "$work/one"
part "${launcher[@]}" -n 2 "$work/two"
part "${launcher[@]}" -n 3 "$work/three"
for id in 5 6 7; do
  SLURM_ARRAY_TASK_ID=$id SLURM_ARRAY_TASK_MIN=5 SLURM_ARRAY_TASK_COUNT=3 \
    examples/cluster/slurm.sh "$module" "$work/array"
done
for folder in one two three array; do join "$work/$folder"; done
[[ $(cd "$work" && echo {one,two,three,array}/part*) == "one/part-0001-of-0001.mat \
two/part-0001-of-0002.mat two/part-0002-of-0002.mat three/part-0001-of-0003.mat three/part-0002-of-0003.mat \
three/part-0003-of-0003.mat array/part-0001-of-0003.mat array/part-0002-of-0003.mat \
array/part-0003-of-0003.mat" ]]

"${run[@]}" "
  f = clusterfield ();
  p = pistongrid (f.x, f.y, f.z, f.l, f.s, f.k, f.order);
  assert (max (abs (p(:))) > 1);
  for folder = {'one', 'two', 'three', 'array'}
    joined = load (fullfile ('$work', folder{1}, 'field.mat'));
    assert (isequal (joined.p, p));
    assert (isequal (joined.field, f));
  end
  assert (isequal (joinparts ('$work/two'), p));
  part = load ('$work/three/part-0002-of-0003.mat');
  assert ([part.first, part.last], floor ([1, 2] * numel (p) / 3) + [1, 0]);"

# Computes one part of a job array again.
rm "$work/array/part-0002-of-0003.mat"
fails "Of 3 parts in $work/array these are missing: 2." join "$work/array"
PARTS=3 SLURM_ARRAY_TASK_ID=1 SLURM_ARRAY_TASK_MIN=1 SLURM_ARRAY_TASK_COUNT=1 \
  examples/cluster/slurm.sh "$module" "$work/array"
rm "$work/array/field.mat"
join "$work/array"
"${run[@]}" "assert (isequal (load ('$work/array/field.mat'), load ('$work/three/field.mat')));"

# An unfinished part does not count, and parts of another field are rejected.
fails "There are no parts" join "$work/refused"
cp "$work/two/part-0001-of-0002.mat" "$work/refused"
head -c 1000 "$work/two/part-0002-of-0002.mat" >"$work/refused/oct-abcdef.tmp"
fails "these are missing: 2." join "$work/refused"
cp "$work/three/part-0002-of-0003.mat" "$work/refused"
fails "There are parts of a run with 2 and of a run with 3 processes" join "$work/refused"
mv "$work/refused/part-0002-of-0003.mat" "$work/refused/part-0002-of-0002.mat"
fails "does not hold the expected points" join "$work/refused"
for change in "part.field.k *= 2;belong to different fields" "part.version = 'x';was computed by x" \
  "part.last -= 1; part.p(end) = [];The last part does not end"; do
  "${run[@]}" "part = load ('$work/two/part-0002-of-0002.mat'); ${change%;*};
        save ('-v6', '$work/refused/part-0002-of-0002.mat', '-struct', 'part');"
  fails "${change##*;}" join "$work/refused"
done
[[ ! -e $work/refused/field.mat ]]

# Other files are ignored, and a field may contain NaN.
mkdir "$work/others"
"${run[@]}" "f = clusterfield (); [f.x, f.y, f.z] = deal ([0, NaN], 0, 1e-3); computepart ('$work/others', f);"
for name in part-x-of-y part-1-of-2 "part-0001-of-0001 (1)"; do
  cp "$work/others/part-0001-of-0001.mat" "$work/others/$name.mat"
done
"${run[@]}" "p = joinparts ('$work/others'); f = clusterfield ();
      assert (p(1), pistongrid (0, 0, 1e-3, f.l, f.s, f.k, f.order)); assert (isnan (p(2)));"
rm "$work/others/part-0001-of-0001.mat"
fails "There are no parts" join "$work/others"

# A limit on the file size stands in for a full disk.
mkdir "$work/full"
for whole in part join; do
  limited() { (trap '' XFSZ; ulimit -f 1000; "$whole" "$work/full"); }
  fails "could not be written: is the disk full?" limited
  [[ $(ls "$work/full") == "$([[ $whole == part ]] || echo part-0001-of-0001.mat)" ]]
  part "$work/full"
done

# More points than a MAT file can hold, launchers that set invalid ranks, and a missing folder.
large="f = clusterfield (); f.x = f.y = zeros (1, 2 ^ 14);"
fails "start more processes" "${run[@]}" "$large computepart ('$work/refused', f);"
"${run[@]}" "part = load ('$work/one/part-0001-of-0001.mat'); $large part.field = f;
      save ('-v6', '$work/one/part-0001-of-0001.mat', '-struct', 'part');"
fails "write p = joinparts" join "$work/one"
fails 'There is no process 2 of 2' env OMPI_COMM_WORLD_RANK=2 OMPI_COMM_WORLD_SIZE=2 "${run[@]}" "rankandsize ();"
fails 'SLURM_NTASKS is ""; it must' env SLURM_PROCID=0 "${run[@]}" "rankandsize ();"
fails 'SLURM_PROCID is "x"; it must' env SLURM_PROCID=x SLURM_NTASKS=1 "${run[@]}" "rankandsize ();"
fails "$work/none" part "$work/none"
for launch in "PMI_RANK=3 PMI_SIZE=4" "SLURM_PROCID=3 SLURM_NTASKS=4" \
  "OMPI_COMM_WORLD_RANK=3 OMPI_COMM_WORLD_SIZE=4 SLURM_PROCID=0 SLURM_NTASKS=1" \
  "SLURM_PROCID=1 SLURM_NTASKS=2 SLURM_ARRAY_TASK_ID=1 SLURM_ARRAY_TASK_COUNT=2"; do
  # shellcheck disable=SC2086 # several variables
  env $launch "${run[@]}" "[rank, count] = rankandsize (); assert ([rank, count], [3, 4]);"
done
