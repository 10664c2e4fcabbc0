#!/usr/bin/env bash
#SBATCH --job-name=benchex
#SBATCH --ntasks=1
#SBATCH --cpus-per-task=1
#SBATCH --exclusive
#SBATCH --output=slurm-%A_%a.out
# One slice for each task of a Slurm job array, each alone on its node. From the directory of the run, which all nodes
# share:
#
#   export BENCHEX_FLEET=/usr/share/benchex/fleet
#   "$BENCHEX_FLEET/slices.sh" 4 benchex >slices
#   sbatch --wait --array=1-"$(wc -l <slices)" "$BENCHEX_FLEET/slurm-array.sh" benchex [KEYS...]
#   "$BENCHEX_FLEET/collect.py" .
set -euo pipefail
# Slurm runs a copy of this file, so the other scripts cannot be found beside it.
exec "${BENCHEX_FLEET:?the directory of run_slice.sh}/run_slice.sh" slices "${SLURM_ARRAY_TASK_ID:?no job array}" "$@"
