#!/usr/bin/env bash
# Builds the libFuzzer targets of fuzz/ with clang into build/fuzz and runs all
# of them for MINUTES in total (default 1): one target per core, in waves of
# as many targets as there are cores. Each target grows its own corpus in
# build/fuzz/corpus/<target>, starting from fuzz/corpus/<target> and the kept
# crash inputs of fuzz/regressions/<target>, with fuzz/<target>.dict. A crash
# input is written to build/fuzz/crashes/<target>/; copy it into
# fuzz/regressions/<target>/ so that the test run replays it.
#
# At the end one line per target: runs, runs per second of the run's time,
# runs per second of processor time (the figure that holds on a busy
# machine), coverage (libFuzzer's cov:) and crash inputs written.
set -euo pipefail

minutes=${1:-1}
if ! [[ $minutes =~ ^[0-9]+$ ]] || [ "$minutes" -lt 1 ]; then
  echo "usage: scripts/fuzz.sh [MINUTES]" >&2
  exit 2
fi

root=$(cd "$(dirname "$0")/.." && pwd)
build=$root/build/fuzz
cores=$(nproc)

if [ ! -f "$build/build.ninja" ]; then
  CC=clang CXX=clang++ cmake -S "$root" -B "$build" -G Ninja -DQUARRIN_BUILD_FUZZ=ON \
    -DQUARRIN_BUILD_APP=OFF -DQUARRIN_BUILD_TESTS=OFF -DQUARRIN_BUILD_BENCH=OFF
fi

targets=()
for src in "$root"/fuzz/fuzz_*.cpp; do
  targets+=("$(basename "$src" .cpp)")
done
cmake --build "$build" -j"$cores" --target "${targets[@]}"

count=${#targets[@]}
waves=$(( (count + cores - 1) / cores ))
seconds=$(( minutes * 60 / waves ))
[ "$seconds" -ge 1 ] || seconds=1
echo "fuzz.sh: ${count} targets, ${cores} at a time, ${seconds} s each"

logs=$build/logs
mkdir -p "$logs"

run_target() {
  local t=$1
  local corpus=$build/corpus/$t crashes=$build/crashes/$t
  mkdir -p "$corpus" "$crashes"
  local args=(-max_total_time="$seconds" -timeout=25 -print_final_stats=1
              -artifact_prefix="$crashes/")
  [ -f "$root/fuzz/$t.dict" ] && args+=(-dict="$root/fuzz/$t.dict")
  local dirs=("$corpus")
  [ -d "$root/fuzz/corpus/$t" ] && dirs+=("$root/fuzz/corpus/$t")
  [ -d "$root/fuzz/regressions/$t" ] && dirs+=("$root/fuzz/regressions/$t")
  local start end
  touch "$logs/$t.start"
  start=$(date +%s.%N)
  ( cd "$crashes" && exec "$build/bin/$t" "${args[@]}" "${dirs[@]}" ) >"$logs/$t.log" 2>&1 || true
  end=$(date +%s.%N)
  echo "$start $end" >"$logs/$t.wall"
}

for ((w = 0; w < waves; ++w)); do
  pids=()
  for ((i = w * cores; i < (w + 1) * cores && i < count; ++i)); do
    t=${targets[$i]}
    rm -f "$logs/$t.cpu"
    (
      run_target "$t" &
      child=$!
      wait "$child"
      # The processor time of the target's run: reaped children's time, as
      # this shell counts it. A builtin in a pipe would run in a new process
      # and count nothing, so its output goes through a file.
      times >"$logs/$t.times"
      tail -1 "$logs/$t.times" | awk '{
        split($1, u, "m"); split($2, s, "m");
        sub("s", "", u[2]); sub("s", "", s[2]);
        print u[1] * 60 + u[2] + s[1] * 60 + s[2] }' >"$logs/$t.cpu"
    ) &
    pids+=($!)
  done
  wait "${pids[@]}"
done

printf '%-22s %12s %10s %12s %8s %8s\n' target runs runs/s runs/cpu-s cov crashes
for t in "${targets[@]}"; do
  log=$logs/$t.log
  runs=$(grep -o 'stat::number_of_executed_units: [0-9]*' "$log" | awk '{print $2}' | tail -1)
  [ -n "$runs" ] || runs=$(grep -o '^#[0-9]*' "$log" | tr -d '#' | tail -1)
  [ -n "$runs" ] || runs=0
  cov=$(grep -o 'cov: [0-9]*' "$log" | awk '{print $2}' | tail -1)
  [ -n "$cov" ] || cov=0
  read -r start end <"$logs/$t.wall"
  cpu=$(cat "$logs/$t.cpu" 2>/dev/null || echo 0)
  crashes=$(find "$build/crashes/$t" -type f -newer "$logs/$t.start" | wc -l)
  awk -v t="$t" -v r="$runs" -v s="$start" -v e="$end" -v c="$cpu" -v cov="$cov" -v x="$crashes" 'BEGIN {
    wall = e - s; rate = wall > 0 ? r / wall : 0; crate = c > 0 ? r / c : 0;
    printf "%-22s %12d %10.0f %12.0f %8d %8d\n", t, r, rate, crate, cov, x }'
done
for t in "${targets[@]}"; do
  find "$build/crashes/$t" -type f -newer "$logs/$t.start" -printf 'crash input: %p\n'

done
