#!/bin/sh
# run_fuzzer.sh <fuzzer> <seed corpus> <scratch directory> <seconds>
# Runs a fuzz target for a bounded time over a scratch copy of its seed
# corpus, so that the committed corpus never changes; new inputs and any crash
# reproducer land in the scratch directory. ZT_FUZZ_SECONDS in the environment
# overrides <seconds>. The exit status is the fuzzer's: not 0 on any finding.
set -eu
fuzzer=$1 seeds=$2 scratch=$3
rm -rf "$scratch"
mkdir -p "$scratch/corpus"
cp "$seeds"/* "$scratch/corpus/"
cd "$scratch"
exec "$fuzzer" -max_total_time="${ZT_FUZZ_SECONDS:-$4}" -timeout=30 -print_final_stats=1 \
  -artifact_prefix="$scratch/" "$scratch/corpus"
