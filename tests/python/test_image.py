import contextlib
import gc

import numpy as np
import pytest

import reference as ref
import ztcoreex


def _image(layout="RGB", dtype=np.uint8, height=3, width=4):
    source = ref.random_image(np.random.default_rng(3), layout, dtype, height, width)
    return ztcoreex.Image(source, layout), source


@pytest.mark.parametrize("layout", list(ref.SOURCE_ROLES))
@pytest.mark.parametrize("dtype", ref.DTYPES, ids=lambda d: np.dtype(d).name)
def test_the_view_and_the_pixel_access_show_the_same_copied_samples(layout, dtype):
    image, source = _image(layout, dtype)
    view = np.asarray(image)
    assert image.shape == view.shape and image.dtype == dtype and ref.same_bits(view, source)
    assert image.format == f"4x3, {layout}, {image.data_type.name}"
    for y, x in [(0, 0), (1, 3), (2, 2)]:  # get_pixel through the library against the view
        got = np.array(image.get_pixel(x, y), dtype)
        assert ref.same_bits(got.reshape(view[y, x].shape), view[y, x])
    image.set_pixel(1, 0, source[2, 3] if source.ndim == 2 else tuple(source[2, 3]))
    assert ref.same_bits(view[0, 1], source[2, 3])
    kept = view.copy()
    source[...] = 0  # the image holds a copy of the array it was made from
    assert ref.same_bits(np.asarray(image), kept)
    del image  # and the view keeps it alive
    gc.collect()
    assert ref.same_bits(view, kept)


OUTSIDE = [(-1, 0), (0, -1), (4, 0), (0, 3), (4, 3), (2**31 - 1, 0)]
UNFIT = [((1, 2), ValueError), ((1, 2, 256), ValueError), ((1, 2, -1), ValueError),
         ((1, 2, 3.0), TypeError), (5, TypeError)]


@pytest.mark.parametrize("at,value,exception", [(at, (1, 2, 3), IndexError) for at in OUTSIDE] +
                         [((0, 0), value, exception) for value, exception in UNFIT])
def test_pixel_access_outside_the_image_or_a_value_that_does_not_fit_is_refused(at, value, exception):
    image, source = _image()
    with pytest.raises(exception):
        image.set_pixel(*at, value)
    with pytest.raises(IndexError) if exception is IndexError else contextlib.nullcontext():
        image.get_pixel(*at)
    assert ref.same_bits(np.asarray(image), source)


@pytest.mark.parametrize("move", [lambda image, other: image.create(2, 2, "Lum", np.uint8),
                                  lambda image, other: other.convert("Lum", out=image)],
                         ids=["create", "convert into it"])
def test_nothing_moves_the_pixels_while_a_view_lives(move):
    (image, source), (other, _) = _image(), _image()
    for make_view in (np.asarray, memoryview, lambda i: np.asarray(i)[1:, 2:]):
        view = make_view(image)
        with pytest.raises(BufferError):
            move(image, other)
        assert image.format == "4x3, RGB, UByte" and ref.same_bits(np.asarray(image), source)
        del view
    move(image, other)
    assert image.format != "4x3, RGB, UByte"


@pytest.mark.parametrize("layout,dtype", [("RGB", np.uint16), ("Lum", np.float64),
                                          ("BGRA", np.int8), ("LumA", np.float32)])
def test_convert_matches_the_module_function_and_a_refusal_leaves_out_as_it_was(layout, dtype):
    image, source = _image("BGR", np.int16)
    want = ztcoreex.convert(source, "BGR", layout, dtype)
    assert ref.same_bits(np.asarray(image.convert(layout, dtype)), want)
    out = ztcoreex.Image(1, 1, "Lum", np.uint8)
    assert image.convert(layout, dtype, out=out) is out and ref.same_bits(np.asarray(out), want)
    with pytest.raises(ValueError, match="4x3, BGR, Short.*4x3, BayerGB, Short"):
        image.convert("BayerGB", out=out)
    assert ref.same_bits(np.asarray(out), want)
    with pytest.raises(ValueError, match="itself"):
        image.convert(layout, out=image)


def test_normalize_stretches_in_place_answers_false_for_another_format_and_bad_images_fail():
    for args in [(0, 1, "RGB", np.uint8), (2, 2, "Lum", None)]:
        with pytest.raises((ValueError, TypeError)):
            ztcoreex.Image(*args)
    image = ztcoreex.Image(np.array([[2.0, 4.0], [np.nan, 6.0]], np.float32), "Lum")
    assert image.normalize() is True and np.asarray(image)[0].tolist() == [0.0, 0.5]
    assert ztcoreex.Image(2, 2, "Lum", np.float64).normalize() is False
