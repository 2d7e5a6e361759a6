import itertools

import numpy as np
import pytest

import reference as ref
import ztcoreex

SOURCES = list(ref.SOURCE_ROLES)
TARGETS = list(ref.TARGET_ROLES)
BAYERS = ["BayerRG", "BayerBG", "BayerGR", "BayerGB"]


@pytest.mark.parametrize("source_dtype,target_dtype", list(itertools.product(ref.DTYPES, repeat=2)),
                         ids=lambda d: np.dtype(d).name)
def test_every_layout_pair_matches_the_reference(source_dtype, target_dtype):
    rng = np.random.default_rng(np.dtype(source_dtype).num * 100 + np.dtype(target_dtype).num)
    for source_layout in SOURCES:
        source = ref.random_image(rng, source_layout, source_dtype)
        before = source.copy()
        for target_layout in TARGETS:
            got = ztcoreex.convert(source, source_layout, target_layout, target_dtype)
            want = ref.convert(source, source_layout, target_layout, target_dtype)
            assert ref.same_bits(got, want), (source_layout, target_layout, got, want)
        assert ref.same_bits(source, before)


@pytest.mark.parametrize("bayer", BAYERS)
@pytest.mark.parametrize("dtype", ref.DTYPES, ids=lambda d: np.dtype(d).name)
def test_bayer_target_only_copies_its_own_format(bayer, dtype):
    rng = np.random.default_rng(7)
    source = ref.random_image(rng, bayer, dtype)
    assert ref.same_bits(ztcoreex.convert(source, bayer, bayer), source)
    for other in [t for t in ref.DTYPES if t != dtype]:
        with pytest.raises(ValueError, match=f"{bayer}.*{bayer}"):
            ztcoreex.convert(source, bayer, bayer, other)
    for other_layout in ["Lum"] + [b for b in BAYERS if b != bayer]:
        with pytest.raises(ValueError):
            ztcoreex.convert(source, other_layout, bayer)


def test_out_is_written_in_place_and_returned():
    rng = np.random.default_rng(1)
    source = ref.random_image(rng, "BGRA", np.uint16, 17, 9)
    out = np.full((17, 9, 3), -1.0, np.float32)
    result = ztcoreex.convert(source, "BGRA", "RGB", np.float32, out=out)
    assert result is out
    assert ref.same_bits(out, ref.convert(source, "BGRA", "RGB", np.float32))


@pytest.mark.parametrize("target_type", [np.int16, "int16", np.dtype("<i2"), "Short",
                                         ztcoreex.DataType.Short])
def test_a_target_type_in_every_spelling(target_type):
    source = np.arange(12, dtype=np.uint8).reshape(2, 2, 3)
    got = ztcoreex.convert(source, ztcoreex.PixelType.RGB, "Lum", target_type)
    assert ref.same_bits(got, ref.convert(source, "RGB", "Lum", np.int16))


def test_an_empty_image_converts_to_an_empty_result():
    got = ztcoreex.convert(np.zeros((0, 4, 3), np.uint8), "RGB", "RGBA", np.float64)
    assert got.shape == (0, 4, 4) and got.dtype == np.float64


def _huge(shape, dtype):
    # A C-contiguous array header over a few bytes: the refusal must come
    # before any sample is touched.
    base = np.zeros(16, dtype)
    strides = tuple(int(np.prod(shape[i + 1:])) * base.itemsize for i in range(len(shape)))
    return np.lib.stride_tricks.as_strided(base, shape, strides)


RGB8 = np.zeros((4, 5, 3), np.uint8)

REFUSALS = [
    # (what, call, exception, message)
    ("a list", lambda: ztcoreex.convert([[1, 2]], "Lum", "RGB"), TypeError, "ndarray"),
    ("int64", lambda: ztcoreex.convert(np.zeros((2, 2), np.int64), "Lum", "RGB"), TypeError, "int64"),
    ("float16", lambda: ztcoreex.convert(np.zeros((2, 2), np.float16), "Lum", "RGB"), TypeError,
     "float16"),
    ("big-endian", lambda: ztcoreex.convert(np.zeros((2, 2), ">u2"), "Lum", "RGB"), TypeError,
     "byte order"),
    ("bool target", lambda: ztcoreex.convert(RGB8, "RGB", "Lum", np.bool_), TypeError, "bool"),
    ("channel count", lambda: ztcoreex.convert(RGB8, "RGBA", "RGB"), ValueError, r"\(H, W, 4\)"),
    ("one-sample layout with channels", lambda: ztcoreex.convert(RGB8, "Lum", "RGB"), ValueError,
     r"\(H, W\)"),
    ("one-dimensional", lambda: ztcoreex.convert(np.zeros(6, np.uint8), "Lum", "RGB"), ValueError,
     r"\(H, W\)"),
    ("column slice", lambda: ztcoreex.convert(RGB8[:, ::2], "RGB", "Lum"), ValueError,
     "C-contiguous"),
    ("Fortran order", lambda: ztcoreex.convert(np.asfortranarray(np.zeros((3, 4), np.uint8)),
                                               "Lum", "RGB"), ValueError, "C-contiguous"),
    ("unknown layout name", lambda: ztcoreex.convert(RGB8, "RGB", "rgb"), ValueError, "'rgb'"),
    ("layout of another kind", lambda: ztcoreex.convert(RGB8, "RGB", 0x1907), TypeError,
     "PixelType"),
    ("2^32 pixels", lambda: ztcoreex.convert(_huge((65536, 65536), np.uint8), "Lum", "Lum",
                                             np.uint16), ValueError, "2\\^32"),
    ("2^32 source bytes", lambda: ztcoreex.convert(_huge((32768, 32768, 4), np.uint8), "RGBA",
                                                   "Lum"), ValueError, "2\\^32"),
    ("2^32 target bytes", lambda: ztcoreex.convert(_huge((32768, 32768), np.uint8), "Lum", "RGBA",
                                                   np.uint8), ValueError, "2\\^32"),
    ("out of another dtype", lambda: ztcoreex.convert(RGB8, "RGB", "Lum",
                                                      out=np.zeros((4, 5), np.uint16)), TypeError,
     "uint16"),
    ("out of another size", lambda: ztcoreex.convert(RGB8, "RGB", "Lum",
                                                     out=np.zeros((5, 4), np.uint8)), ValueError,
     "5x4"),
    ("out of another shape", lambda: ztcoreex.convert(RGB8, "RGB", "RGBA",
                                                      out=np.zeros((4, 5, 3), np.uint8)),
     ValueError, r"\(H, W, 4\)"),
    ("out not contiguous", lambda: ztcoreex.convert(RGB8, "RGB", "Lum",
                                                    out=np.zeros((4, 10), np.uint8)[:, ::2]),
     ValueError, "C-contiguous"),
    ("out read-only", lambda: ztcoreex.convert(RGB8, "RGB", "Lum",
                                               out=np.broadcast_to(np.uint8(0), (4, 5))),
     ValueError, "read-only|C-contiguous"),
    ("out a list", lambda: ztcoreex.convert(RGB8, "RGB", "Lum", out=[0] * 20), TypeError,
     "ndarray"),
]


@pytest.mark.parametrize("what,call,exception,message", REFUSALS, ids=[r[0] for r in REFUSALS])
def test_refusals(what, call, exception, message):
    with pytest.raises(exception, match=message):
        call()


@pytest.mark.parametrize("how", ["the same array", "a view of it", "its second half"])
def test_out_overlapping_the_source_is_refused_untouched(how):
    block = np.arange(2 * 4 * 3, dtype=np.uint8).reshape(2, 4, 3)
    before = block.copy()
    source, out = {
        "the same array": (block, block),
        "a view of it": (block, block.reshape(-1).view().reshape(2, 4, 3)),
        "its second half": (block.reshape(-1)[:12].reshape(1, 4, 3),
                            block.reshape(-1)[6:18].reshape(1, 4, 3)),
    }[how]
    with pytest.raises(ValueError, match="overlaps"):
        ztcoreex.convert(source, "RGB", "BGR", out=out)
    assert ref.same_bits(block, before)


def test_a_refused_conversion_leaves_out_untouched():
    out = np.full((3, 3), 99, np.uint16)
    with pytest.raises(ValueError, match="3x3, BayerRG, UByte.*3x3, BayerRG, UShort"):
        ztcoreex.convert(np.zeros((3, 3), np.uint8), "BayerRG", "BayerRG", np.uint16, out=out)
    assert (out == 99).all()
