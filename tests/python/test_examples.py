import os
import pathlib
import struct
import subprocess
import sys
import zlib

import numpy as np
import pytest

import ztcoreex

EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples" / "python"


def _run(script, *args):
    return subprocess.run([sys.executable, str(EXAMPLES / script), *args], capture_output=True,
                          text=True, timeout=240, env=dict(os.environ))


def _read_png(path):
    """(width, height, colour type, rows) of an 8-bit PNG written with filter 0."""
    data = path.read_bytes()
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    chunks, at = {}, 8
    while at < len(data):
        length, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + length]
        assert struct.unpack(">I", data[at + 8 + length:at + 12 + length])[0] == \
            zlib.crc32(kind + body)
        chunks[kind] = chunks.get(kind, b"") + body
        at += 12 + length
    width, height, depth, colour = struct.unpack(">IIBB", chunks[b"IHDR"][:10])
    rows = np.frombuffer(zlib.decompress(chunks[b"IDAT"]), np.uint8).reshape(height, -1)
    assert depth == 8 and (rows[:, 0] == 0).all()
    return width, height, colour, rows[:, 1:]


def test_the_png_example_writes_the_converted_picture(tmp_path):
    path = tmp_path / "picture.png"
    result = _run("convert_png.py", str(path))
    assert result.returncode == 0, result.stderr
    width, height, colour, rows = _read_png(path)
    sys.path.insert(0, str(EXAMPLES))
    try:
        import convert_png
    finally:
        sys.path.pop(0)
    want = ztcoreex.convert(convert_png.test_picture(), "RGB", "RGBA", np.uint8)
    assert (width, height, colour) == (640, 480, 6)
    assert np.array_equal(rows.reshape(want.shape), want)
    assert (want[..., 3] == 255).all() and want[..., :3].std() > 10


def test_the_dask_example_on_the_local_scheduler():
    result = _run("dask_convert.py", "--size", "701x301", "--rows", "37")
    assert result.returncode == 0, result.stderr
    assert "bit-identical" in result.stdout and "9 bands" in result.stdout


def test_the_dask_example_on_a_local_cluster_of_two_worker_processes():
    distributed = pytest.importorskip("dask.distributed")
    with distributed.LocalCluster(n_workers=2, processes=True, threads_per_worker=1,
                                  dashboard_address=None) as cluster:
        result = _run("dask_convert.py", "--size", "640x480", "--rows", "50",
                      "--scheduler", cluster.scheduler_address)
    assert result.returncode == 0, result.stderr
    assert "bit-identical" in result.stdout and cluster.scheduler_address in result.stdout


def test_the_readme_example_runs():
    readme = (EXAMPLES.parents[1] / "README.md").read_text()
    code = readme.split("```python\n", 1)[1].split("```", 1)[0]
    namespace = {}
    exec(compile(code, "README.md", "exec"), namespace)
    assert namespace["grey"].shape == (480, 640) and namespace["grey"].dtype == np.float32
    assert namespace["bgra"][..., 3].min() == 65535
