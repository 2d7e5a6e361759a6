#!/bin/sh
# run_fuzzer.sh <fuzzer> <seed corpus> <scratch directory> <seconds>
# Runs a fuzz target in and over a scratch copy of its seeds, where new inputs and any crash
# reproducer land; ZT_FUZZ_SECONDS in the environment overrides <seconds>. Fails on any finding.
set -eu
fuzzer=$1 seeds=$2 scratch=$3
rm -rf "$scratch"
mkdir -p "$scratch/corpus"
cp "$seeds"/* "$scratch/corpus/"
cd "$scratch"
exec "$fuzzer" -max_total_time="${ZT_FUZZ_SECONDS:-$4}" -timeout=30 -print_final_stats=1 \
  -artifact_prefix="$scratch/" "$scratch/corpus"
