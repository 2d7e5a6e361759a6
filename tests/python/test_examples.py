import pathlib
import struct
import sys
import zlib

import numpy as np
import pytest

import ztcoreex

EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples" / "python"
sys.path.insert(0, str(EXAMPLES))


def test_the_png_example_writes_the_converted_picture(tmp_path):
    import convert_png
    convert_png.main(["convert_png.py", str(tmp_path / "picture.png")])
    data, chunks, at = (tmp_path / "picture.png").read_bytes(), {}, 8
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    while at < len(data):  # every chunk with its CRC; IHDR and the joined IDAT kept
        length, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + length]
        assert struct.unpack(">I", data[at + 8 + length:at + 12 + length])[0] == zlib.crc32(kind + body)
        chunks[kind] = chunks.get(kind, b"") + body
        at += 12 + length
    assert struct.unpack(">IIBB", chunks[b"IHDR"][:10]) == (640, 480, 8, 6)  # RGBA, 8 bits
    rows = np.frombuffer(zlib.decompress(chunks[b"IDAT"]), np.uint8).reshape(480, -1)
    want = ztcoreex.convert(convert_png.test_picture(), "RGB", "RGBA", np.uint8)
    assert (rows[:, 0] == 0).all() and np.array_equal(rows[:, 1:].reshape(want.shape), want)
    assert (want[..., 3] == 255).all() and want[..., :3].std() > 10


def test_the_dask_example_on_the_local_scheduler_and_on_two_worker_processes(capsys):
    import dask_convert  # its answer is 0 when the bands are bit-identical to one conversion
    assert dask_convert.main(["--size", "701x301", "--rows", "37"]) == 0
    assert "9 bands" in capsys.readouterr().out
    distributed = pytest.importorskip("dask.distributed")
    with distributed.LocalCluster(n_workers=2, processes=True, threads_per_worker=1,
                                  dashboard_address=None) as cluster:
        assert dask_convert.main(["--size", "640x480", "--rows", "50",
                                  "--scheduler", cluster.scheduler_address]) == 0
    assert cluster.scheduler_address in capsys.readouterr().out


def test_the_readme_example_runs():
    readme = (EXAMPLES.parents[1] / "README.md").read_text()
    exec(readme.split("```python\n", 1)[1].split("```", 1)[0], namespace := {})
    assert namespace["grey"].shape == (480, 640) and namespace["grey"].dtype == np.float32
    assert namespace["bgra"][..., 3].min() == 65535
