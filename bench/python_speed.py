#!/usr/bin/python3
"""What the Python module adds to the conversion engine's time.

    python_speed.py <build dir> [--runs N]

Two figures, each the median of several runs on each side (zt-convert-bench
repeats each of its benchmarks five times):
- per call: one-pixel conversions through ztcoreex.convert(..., out=) against
  the one-pixel row of zt-convert-bench, the same call in C++;
- per pixel: the 4096x4096 cases of zt-convert-bench through ztcoreex.convert
  with out= into an array already written once, against the engine rows of
  zt-convert-bench, which convert into a target allocated once. Both sides
  count the processor time of the converting thread, as the C++ benchmark
  does, so that other load on the machine counts little.

The build needs -DZT_BUILD_BENCHMARKS=ON; PYTHONPATH must lead to ztcoreex.
"""

import argparse
import json
import pathlib
import statistics
import subprocess
import tempfile
import time

import numpy as np

import ztcoreex

SIDE = 4096
TYPES = {"Byte": np.int8, "UByte": np.uint8, "Short": np.int16, "UShort": np.uint16,
         "Int": np.int32, "UInt": np.uint32, "Float": np.float32, "Double": np.float64}
SAMPLES = {"RGB": 3, "RGBA": 4, "BGR": 3, "BGRA": 4, "Lum": 1, "LumA": 2}


def cpp_medians(program):
    """Median processor time per iteration, in ns, of each engine benchmark."""
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        # The program's own verdict on its table (against OpenCV, where built
        # with it) plays no part here.
        subprocess.run([str(program), "--benchmark_filter=^engine", "--benchmark_out_format=json",
                        f"--benchmark_out={out.name}"], check=False, stdout=subprocess.DEVNULL)
        report = json.loads(pathlib.Path(out.name).read_text())
    scale = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
    return {b["run_name"]: b["cpu_time"] * scale[b["time_unit"]] for b in report["benchmarks"]
            if b.get("aggregate_name") == "median"}


def image(layout, type_name, height, width, rng):
    dtype = np.dtype(TYPES[type_name])
    shape = (height, width) if SAMPLES[layout] == 1 else (height, width, SAMPLES[layout])
    if dtype.kind == "f":
        return rng.uniform(-0.25, 1.25, shape).astype(dtype)
    return rng.integers(0, 256, int(np.prod(shape)) * dtype.itemsize, dtype=np.uint8) \
        .view(dtype).reshape(shape)


def python_call_ns(runs, calls=20000):
    source = np.full((1, 1, 3), 128, np.uint8)
    out = np.zeros((1, 1, 4), np.float32)
    convert = ztcoreex.convert
    times = []
    for _ in range(runs):
        start = time.thread_time_ns()
        for _ in range(calls):
            convert(source, "RGB", "RGBA", np.float32, out)
        times.append((time.thread_time_ns() - start) / calls)
    return statistics.median(times)


def python_case_ns(name, runs, rng):
    words = name.split()
    source_type, source_layout, target_type, target_layout = words[0], words[1], words[3], words[4]
    source = image(source_layout, source_type, SIDE, SIDE, rng)
    out = image(target_layout, target_type, SIDE, SIDE, rng)
    ztcoreex.convert(source, source_layout, target_layout, TYPES[target_type], out)
    times = []
    for _ in range(runs):
        # Each run repeats the call for at least 0.2 s, as Google Benchmark
        # repeats its loop, and keeps the mean.
        calls, start = 0, time.thread_time_ns()
        while time.thread_time_ns() - start < 200_000_000:
            ztcoreex.convert(source, source_layout, target_layout, TYPES[target_type], out)
            calls += 1
        times.append((time.thread_time_ns() - start) / calls)
    return statistics.median(times)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--runs", type=int, default=7)
    args = parser.parse_args()
    bench = args.build / "bench"
    rng = np.random.default_rng(1)

    cpp = cpp_medians(bench / "zt-convert-bench")
    cpp_call = next(ns for name, ns in cpp.items() if name.startswith("engine-one-pixel/"))
    py_call = python_call_ns(args.runs)
    print(f"one-pixel call: C++ {cpp_call:.0f} ns, Python {py_call:.0f} ns, "
          f"added {(py_call - cpp_call) / 1000:.2f} us (median of {args.runs})")

    print(f"\n{'4096x4096, out= written once':42} {'C++ ns/px':>10} {'Python':>10} {'ratio':>7}")
    for run_name, cpp_ns in cpp.items():
        way, name = run_name.split("/", 1)
        name = name.split("/repeats:")[0]
        if way != "engine":
            continue
        py_ns = python_case_ns(name.replace(" (equal formats)", ""), args.runs, rng)
        pixels = SIDE * SIDE
        print(f"{name:42} {cpp_ns / pixels:10.3f} {py_ns / pixels:10.3f} {py_ns / cpp_ns:7.3f}")


if __name__ == "__main__":
    main()
