#!/usr/bin/env bash
# check_cluster.sh ROOT PROGRAM: runs the commands of docs/cluster.md for GNU parallel, and the script of its
# Slurm array once for each task, and fails if the parts put together are not what one run writes.
set -euo pipefail
page=$1/docs/cluster.md
work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT
export PATH=${2%/*}:$PATH HOME=$work
cp "$1/examples/iris/model.pmml" "$1/examples/iris/cases.csv" "$work"
cd -- "$work"
svmscore score model.pmml cases.csv >one.csv

# block SECTION: the first block of bash in it.
block() {
  awk -v section="## $1" '/^## / { on = $0 == section } on && /^```/ { if (inside++) exit; next } inside' "$page"
}
compare() {
  cmp scores.csv one.csv || { echo "$page: $1: not the output of one run"; exit 1; }
  rm scores.csv part-*.csv
}

block 'GNU parallel' >parallel.sh
bash -e parallel.sh
parts=(part-*.csv)
[ ${#parts[@]} -eq 16 ]
compare 'GNU parallel'

block 'Slurm arrays' >score.sbatch
export SLURM_CPUS_PER_TASK SLURM_ARRAY_TASK_ID
SLURM_CPUS_PER_TASK=$(sed -n 's/^#SBATCH --cpus-per-task=//p' score.sbatch)
range=$(sed -n 's/^#SBATCH --array=1-//p' score.sbatch)
for ((SLURM_ARRAY_TASK_ID = 1; SLURM_ARRAY_TASK_ID <= range; ++SLURM_ARRAY_TASK_ID)); do bash -e score.sbatch; done
cat part-*.csv >scores.csv
compare 'Slurm arrays'
