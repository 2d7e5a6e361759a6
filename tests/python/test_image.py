import gc

import numpy as np
import pytest

import reference as ref
import ztcoreex

LAYOUTS = list(ref.SAMPLES)


def _image(layout="RGB", dtype=np.uint8, height=3, width=4):
    source = ref.random_image(np.random.default_rng(3), layout, dtype, height, width)
    return ztcoreex.Image(source, layout), source


def test_an_image_from_an_array_is_a_copy():
    image, source = _image()
    kept = source.copy()
    source[...] = 0
    assert ref.same_bits(np.asarray(image), kept)


@pytest.mark.parametrize("layout", LAYOUTS)
@pytest.mark.parametrize("dtype", ref.DTYPES, ids=lambda d: np.dtype(d).name)
def test_the_view_and_the_pixel_access_show_the_same_samples(layout, dtype):
    image, source = _image(layout, dtype)
    view = np.asarray(image)
    assert view.shape == image.shape == source.shape and view.dtype == image.dtype == dtype
    assert ref.same_bits(view, source)
    assert image.format == f"4x3, {layout}, {image.data_type.name}"
    # get_pixel through the library against the view, then set_pixel seen
    # through the view.
    for y, x in [(0, 0), (1, 3), (2, 2)]:
        got = np.array(image.get_pixel(x, y), dtype)
        assert ref.same_bits(got.reshape(view[y, x].shape), view[y, x])
    value = source[2, 3] if source.ndim == 2 else tuple(source[2, 3])
    image.set_pixel(1, 0, value)
    assert ref.same_bits(view[0, 1], source[2, 3])


@pytest.mark.parametrize("x,y", [(-1, 0), (0, -1), (4, 0), (0, 3), (4, 3), (2**31 - 1, 0)])
def test_pixel_access_outside_the_image_raises_index_error(x, y):
    image, _ = _image()
    with pytest.raises(IndexError):
        image.get_pixel(x, y)
    with pytest.raises(IndexError):
        image.set_pixel(x, y, (1, 2, 3))


@pytest.mark.parametrize("value,exception", [((1, 2), ValueError), ((1, 2, 256), ValueError),
                                             ((1, 2, -1), ValueError), ((1, 2, 3.0), TypeError),
                                             (5, TypeError)])
def test_a_pixel_value_that_does_not_fit_is_refused(value, exception):
    image, source = _image()
    with pytest.raises(exception):
        image.set_pixel(0, 0, value)
    assert ref.same_bits(np.asarray(image), source)


def test_a_view_outlives_every_python_name_of_the_image():
    image, source = _image("LumA", np.float64, 5, 6)
    view = np.asarray(image)
    also = memoryview(image)
    del image
    gc.collect()
    assert ref.same_bits(view, source)
    view[0, 0, 0] = 42.0
    assert also.tolist()[0][0][0] == 42.0


MOVES = [
    ("create", lambda image, other: image.create(2, 2, "Lum", np.uint8)),
    ("convert into it", lambda image, other: other.convert("Lum", out=image)),
]


@pytest.mark.parametrize("what,move", MOVES, ids=[m[0] for m in MOVES])
def test_nothing_moves_the_pixels_while_a_view_lives(what, move):
    image, source = _image()
    other, _ = _image()
    for make_view in (np.asarray, memoryview, lambda i: np.asarray(i)[1:, 2:]):
        view = make_view(image)
        with pytest.raises(BufferError):
            move(image, other)
        assert image.format == "4x3, RGB, UByte"
        assert ref.same_bits(np.asarray(image), source)
        del view
        gc.collect()
    move(image, other)
    assert image.format != "4x3, RGB, UByte"


@pytest.mark.parametrize("layout,dtype", [("RGB", np.uint16), ("Lum", np.float64),
                                          ("BGRA", np.int8), ("LumA", np.float32)])
def test_convert_matches_the_reference(layout, dtype):
    image, source = _image("BGR", np.int16)
    result = image.convert(layout, dtype)
    assert ref.same_bits(np.asarray(result), ref.convert(source, "BGR", layout, dtype))
    out = ztcoreex.Image(1, 1, "Lum", np.uint8)
    assert image.convert(layout, dtype, out=out) is out
    assert ref.same_bits(np.asarray(out), ref.convert(source, "BGR", layout, dtype))


def test_a_refused_image_conversion_leaves_out_as_it_was():
    image, _ = _image()
    out, out_source = _image("Lum", np.float32)
    with pytest.raises(ValueError, match="4x3, RGB, UByte.*4x3, BayerGB, UByte"):
        image.convert("BayerGB", out=out)
    assert ref.same_bits(np.asarray(out), out_source)
    with pytest.raises(ValueError, match="itself"):
        image.convert("Lum", out=image)


@pytest.mark.parametrize("args", [(0, 1, "RGB", np.uint8), (1, -1, "RGB", np.uint8),
                                  (65536, 65536, "Lum", np.uint8), (2, 2, "None", np.uint8),
                                  (2, 2, "RGB", np.int64), (2, 2, "RGB", None)])
def test_an_image_the_library_cannot_make_is_refused(args):
    with pytest.raises((ValueError, TypeError)):
        ztcoreex.Image(*args)


def test_normalize_gives_the_library_answer():
    image = ztcoreex.Image(np.array([[2.0, 4.0], [np.nan, 6.0]], np.float32), "Lum")
    assert image.normalize() is True
    view = np.asarray(image)
    assert view[0].tolist() == [0.0, 0.5] and view[1, 1] == 1.0 and np.isnan(view[1, 0])
    assert ztcoreex.Image(2, 2, "Lum", np.float64).normalize() is False
    assert ztcoreex.Image(2, 2, "RGB", np.float32).normalize() is False
