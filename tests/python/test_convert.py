import sys
import threading

import numpy as np
import pytest

import reference as ref
import ztcoreex


@pytest.mark.parametrize("target_dtype", ref.DTYPES, ids=lambda d: np.dtype(d).name)
@pytest.mark.parametrize("source_dtype", ref.DTYPES, ids=lambda d: np.dtype(d).name)
def test_every_layout_pair_matches_the_reference(source_dtype, target_dtype):
    rng = np.random.default_rng(np.dtype(source_dtype).num * 100 + np.dtype(target_dtype).num)
    for source_layout in ref.SOURCE_ROLES:
        source = ref.random_image(rng, source_layout, source_dtype)
        before = source.copy()
        for target_layout in ref.TARGET_ROLES:
            got = ztcoreex.convert(source, source_layout, target_layout, target_dtype)
            want = ref.convert(source, source_layout, target_layout, target_dtype)
            assert ref.same_bits(got, want), (source_layout, target_layout, got, want)
        assert ref.same_bits(source, before)


def test_out_is_written_in_place_band_by_band_a_target_type_in_every_spelling_and_empty_images():
    source = ref.random_image(np.random.default_rng(1), "BGRA", np.uint16, 17, 9)
    before, whole = source.copy(), ztcoreex.convert(source, "BGRA", "RGB", np.float32)
    assert ref.same_bits(whole, ref.convert(source, "BGRA", "RGB", np.float32))
    out = np.full(whole.shape, np.nan, np.float32)
    part = out[:3]
    assert ztcoreex.convert(source[:3], "BGRA", "RGB", np.float32, out=part) is part
    bands = [slice(10, 17), slice(3, 10)]  # views into one source and one out, on two threads
    threads = [threading.Thread(target=ztcoreex.convert, args=(source[b], "BGRA", "RGB", "Float"),
                                kwargs={"out": out[b]}) for b in bands]
    [thread.start() for thread in threads]
    [thread.join() for thread in threads]
    assert ref.same_bits(out, whole) and ref.same_bits(source, before)
    for spelling in ["int16", np.dtype("<i2"), "Short", ztcoreex.DataType.Short]:
        got = ztcoreex.convert(source, ztcoreex.PixelType.BGRA, "Lum", spelling)
        assert ref.same_bits(got, ref.convert(source, "BGRA", "Lum", np.int16)), spelling
    got = ztcoreex.convert(np.zeros((0, 4, 3), np.uint8), "RGB", "RGBA", np.float64)
    assert got.shape == (0, 4, 4) and got.dtype == np.float64


def _huge(*shape):  # a C-contiguous header over 16 bytes: refused before any sample is touched
    strides = [int(np.prod(shape[i + 1:])) for i in range(len(shape))]
    return np.lib.stride_tricks.as_strided(np.zeros(16, np.uint8), shape, strides)


RGB8, BLOCK = np.zeros((4, 5, 3), np.uint8), np.arange(24, dtype=np.uint8)
REFUSALS = [  # (exception, message, positional arguments, out)
    (TypeError, "ndarray", ([[1, 2]], "Lum", "RGB"), None),
    (TypeError, "int64", (np.zeros((2, 2), np.int64), "Lum", "RGB"), None),
    (TypeError, "byte order", (np.zeros((2, 2), ">u2"), "Lum", "RGB"), None),
    (ValueError, r"\(H, W\)", (RGB8, "Lum", "RGB"), None),
    (ValueError, "C-contiguous", (RGB8[:, ::2], "RGB", "Lum"), None),
    (ValueError, "'rgb'", (RGB8, "RGB", "rgb"), None),
    (TypeError, "PixelType", (RGB8, "RGB", 0x1907), None),
    (ValueError, r"2\^32", (_huge(32768, 32768, 4), "RGBA", "Lum"), None),
    (ValueError, r"2\^32", (_huge(32768, 32768), "Lum", "RGBA", np.uint8), None),
    (TypeError, "uint16", (RGB8, "RGB", "Lum"), np.zeros((4, 5), np.uint16)),
    (ValueError, "5x4", (RGB8, "RGB", "Lum"), np.zeros((5, 4), np.uint8)),
    (ValueError, r"\(H, W, 4\)", (RGB8, "RGB", "RGBA"), np.zeros((4, 5, 3), np.uint8)),
    (ValueError, "read-only|C-contiguous", (RGB8, "RGB", "Lum"), np.broadcast_to(np.uint8(0), (4, 5))),
    (TypeError, "ndarray", (RGB8, "RGB", "Lum"), [0] * 20),
    (ValueError, "3x3, BayerRG, UByte.*3x3, BayerRG, UShort",
     (np.zeros((3, 3), np.uint8), "BayerRG", "BayerRG", np.uint16), np.full((3, 3), 99, np.uint16)),
    (ValueError, "overlaps", (BLOCK.reshape(2, 4, 3), "RGB", "BGR"), BLOCK.reshape(2, 4, 3)),
    (ValueError, "overlaps", (BLOCK[:12].reshape(1, 4, 3), "RGB", "BGR"), BLOCK[6:18].reshape(1, 4, 3)),
]


@pytest.mark.parametrize("exception,message,args,out", REFUSALS)
def test_refusals_leave_source_and_out_untouched(exception, message, args, out):
    before = [(a, a.copy()) for a in (args[0], out) if isinstance(a, np.ndarray) and a.nbytes < 4096]
    with pytest.raises(exception, match=message):
        ztcoreex.convert(*args, out=out)
    assert all(ref.same_bits(a, copy) for a, copy in before)


def test_the_gil_is_released_while_converting():
    # Under a long switch interval start() returns before the worker ends only if it lets the GIL go.
    source, out = np.zeros((1024, 1024, 4), np.uint8), np.empty((1024, 1024, 4))
    worker = threading.Thread(target=lambda: [ztcoreex.convert(source, "RGBA", "BGRA", np.float64,
                                                               out=out) for _ in range(20)])
    interval = sys.getswitchinterval()
    sys.setswitchinterval(2.0)
    try:
        worker.start()
        assert worker.is_alive()
    finally:
        sys.setswitchinterval(interval)
        worker.join()
