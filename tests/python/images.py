"""The module tests' sample types, samples per pixel of each layout, random images, bit equality."""

import numpy as np

DTYPES = [np.int8, np.uint8, np.int16, np.uint16, np.int32, np.uint32, np.float32, np.float64]
SAMPLES = {"RGB": 3, "RGBA": 4, "BGR": 3, "BGRA": 4, "Lum": 1, "LumA": 2, "BayerRG": 1,
           "BayerBG": 1, "BayerGR": 1, "BayerGB": 1}
TARGETS = ["RGB", "RGBA", "BGR", "BGRA", "Lum", "LumA"]  # the layouts a conversion writes


def shape(layout, height, width):
    return (height, width) if SAMPLES[layout] == 1 else (height, width, SAMPLES[layout])


def random_image(rng, layout, dtype, height=3, width=5):
    """Random samples over the whole range, the extremes and special float values planted first."""
    dtype, count = np.dtype(dtype), int(np.prod(shape(layout, height, width)))
    if dtype.kind == "f":
        flat, specials = rng.uniform(-2, 2, count).astype(dtype), [np.nan, np.inf, -np.inf, -0.0]
    else:
        info = np.iinfo(dtype)
        flat, specials = rng.integers(info.min, info.max, count, dtype, True), [info.min, info.max]
    flat[: len(specials)] = specials[:count]
    return flat.reshape(shape(layout, height, width))


def same_bits(a, b):
    """Equality of every bit, so that NaNs and signed zeros count."""
    unsigned, same = np.dtype(f"u{a.dtype.itemsize}"), a.dtype == b.dtype and a.shape == b.shape
    return same and np.array_equal(a.view(unsigned), b.view(unsigned))
