import itertools
import sys
import threading
from concurrent.futures import ThreadPoolExecutor

import numpy as np
import pytest

import reference as ref
import ztcoreex

NAME = lambda d: np.dtype(d).name  # noqa: E731


@pytest.mark.parametrize("source_dtype,target_dtype", list(itertools.product(ref.DTYPES, repeat=2)),
                         ids=NAME)
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


@pytest.mark.parametrize("bayer", ref.BAYERS)
@pytest.mark.parametrize("dtype", ref.DTYPES, ids=NAME)
def test_bayer_target_only_copies_its_own_format(bayer, dtype):
    source = ref.random_image(np.random.default_rng(7), bayer, dtype)
    assert ref.same_bits(ztcoreex.convert(source, bayer, bayer), source)
    for other in [t for t in ref.DTYPES if t != dtype]:
        with pytest.raises(ValueError, match=f"{bayer}.*{bayer}"):
            ztcoreex.convert(source, bayer, bayer, other)
    for other_layout in ["Lum"] + [b for b in ref.BAYERS if b != bayer]:
        with pytest.raises(ValueError):
            ztcoreex.convert(source, other_layout, bayer)


def test_out_is_written_in_place_a_target_type_in_every_spelling_and_empty_images():
    source = ref.random_image(np.random.default_rng(1), "BGRA", np.uint16, 17, 9)
    out = np.full((17, 9, 3), -1.0, np.float32)
    assert ztcoreex.convert(source, "BGRA", "RGB", np.float32, out=out) is out
    assert ref.same_bits(out, ref.convert(source, "BGRA", "RGB", np.float32))
    source = np.arange(12, dtype=np.uint8).reshape(2, 2, 3)
    for spelling in [np.int16, "int16", np.dtype("<i2"), "Short", ztcoreex.DataType.Short]:
        got = ztcoreex.convert(source, ztcoreex.PixelType.RGB, "Lum", spelling)
        assert ref.same_bits(got, ref.convert(source, "RGB", "Lum", np.int16)), spelling
    got = ztcoreex.convert(np.zeros((0, 4, 3), np.uint8), "RGB", "RGBA", np.float64)
    assert got.shape == (0, 4, 4) and got.dtype == np.float64


def _huge(*shape):  # a C-contiguous header over 16 bytes: refused before any sample is touched
    strides = [int(np.prod(shape[i + 1:])) for i in range(len(shape))]
    return np.lib.stride_tricks.as_strided(np.zeros(16, np.uint8), shape, strides)


RGB8, BLOCK = np.zeros((4, 5, 3), np.uint8), np.arange(24, dtype=np.uint8)
REFUSALS = [  # (exception, message, positional arguments, out)
    (TypeError, "ndarray", ([[1, 2]], "Lum", "RGB"), None),
    (TypeError, "int64", (np.zeros((2, 2), np.int64), "Lum", "RGB"), None),
    (TypeError, "float16", (np.zeros((2, 2), np.float16), "Lum", "RGB"), None),
    (TypeError, "byte order", (np.zeros((2, 2), ">u2"), "Lum", "RGB"), None),
    (TypeError, "bool", (RGB8, "RGB", "Lum", np.bool_), None),
    (ValueError, r"\(H, W, 4\)", (RGB8, "RGBA", "RGB"), None),
    (ValueError, r"\(H, W\)", (RGB8, "Lum", "RGB"), None),
    (ValueError, r"\(H, W\)", (np.zeros(6, np.uint8), "Lum", "RGB"), None),
    (ValueError, "C-contiguous", (RGB8[:, ::2], "RGB", "Lum"), None),
    (ValueError, "C-contiguous", (np.asfortranarray(np.zeros((3, 4), np.uint8)), "Lum", "RGB"), None),
    (ValueError, "'rgb'", (RGB8, "RGB", "rgb"), None),
    (TypeError, "PixelType", (RGB8, "RGB", 0x1907), None),
    (ValueError, r"2\^32", (_huge(65536, 65536), "Lum", "Lum", np.uint16), None),
    (ValueError, r"2\^32", (_huge(32768, 32768, 4), "RGBA", "Lum"), None),
    (ValueError, r"2\^32", (_huge(32768, 32768), "Lum", "RGBA", np.uint8), None),
    (TypeError, "uint16", (RGB8, "RGB", "Lum"), np.zeros((4, 5), np.uint16)),
    (ValueError, "5x4", (RGB8, "RGB", "Lum"), np.zeros((5, 4), np.uint8)),
    (ValueError, r"\(H, W, 4\)", (RGB8, "RGB", "RGBA"), np.zeros((4, 5, 3), np.uint8)),
    (ValueError, "C-contiguous", (RGB8, "RGB", "Lum"), np.zeros((4, 10), np.uint8)[:, ::2]),
    (ValueError, "read-only|C-contiguous", (RGB8, "RGB", "Lum"), np.broadcast_to(np.uint8(0), (4, 5))),
    (TypeError, "ndarray", (RGB8, "RGB", "Lum"), [0] * 20),
    (ValueError, "3x3, BayerRG, UByte.*3x3, BayerRG, UShort",
     (np.zeros((3, 3), np.uint8), "BayerRG", "BayerRG", np.uint16), np.full((3, 3), 99, np.uint16)),
    # An out that overlaps the source: the same array, a view of it, its second half.
    (ValueError, "overlaps", (BLOCK.reshape(2, 4, 3), "RGB", "BGR"), BLOCK.reshape(2, 4, 3)),
    (ValueError, "overlaps", (BLOCK.reshape(2, 4, 3), "RGB", "BGR"), BLOCK.view().reshape(2, 4, 3)),
    (ValueError, "overlaps", (BLOCK[:12].reshape(1, 4, 3), "RGB", "BGR"), BLOCK[6:18].reshape(1, 4, 3)),
]


@pytest.mark.parametrize("exception,message,args,out", REFUSALS)
def test_refusals_leave_source_and_out_untouched(exception, message, args, out):
    arrays = [a for a in (args[0], out) if isinstance(a, np.ndarray) and a.nbytes < 4096]
    before = [a.copy() for a in arrays]
    with pytest.raises(exception, match=message):
        ztcoreex.convert(*args, out=out)
    assert all(ref.same_bits(a, b) for a, b in zip(arrays, before))


def test_threads_convert_bands_of_one_image_into_one_array():
    source = ref.random_image(np.random.default_rng(11), "RGBA", np.uint16, 1003, 257)
    whole = ztcoreex.convert(source, "RGBA", "BGR", np.float32)
    out, edges = np.full(whole.shape, np.nan, np.float32), np.linspace(0, 1003, 8, dtype=int)

    def band(top, bottom):
        for _ in range(5):
            ztcoreex.convert(source[top:bottom], "RGBA", "BGR", np.float32, out=out[top:bottom])

    with ThreadPoolExecutor(len(edges) - 1) as pool:
        list(pool.map(band, edges[:-1], edges[1:]))  # raises what a thread raised
    assert ref.same_bits(out, whole)
    assert ref.same_bits(whole, ref.convert(source, "RGBA", "BGR", np.float32))


def test_the_gil_is_released_while_converting():
    # With a long switch interval the main thread, waiting in start() for the GIL, gets back before
    # the worker is done only if a conversion lets the GIL go.
    source, out, done = np.zeros((1024, 1024, 4), np.uint8), np.empty((1024, 1024, 4)), threading.Event()

    def convert():
        for _ in range(20):
            ztcoreex.convert(source, "RGBA", "BGRA", np.float64, out=out)
        done.set()

    interval, worker = sys.getswitchinterval(), threading.Thread(target=convert)
    sys.setswitchinterval(2.0)
    try:
        worker.start()
        back_before_the_end = not done.is_set()
        worker.join()
    finally:
        sys.setswitchinterval(interval)
    assert back_before_the_end
