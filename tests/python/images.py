"""Images for the module's tests: the sample types, the samples of a pixel of each layout, random
images and a comparison of every bit."""

import numpy as np

DTYPES = [np.int8, np.uint8, np.int16, np.uint16, np.int32, np.uint32, np.float32, np.float64]
SAMPLES = {"RGB": 3, "RGBA": 4, "BGR": 3, "BGRA": 4, "Lum": 1, "LumA": 2, "BayerRG": 1,
           "BayerBG": 1, "BayerGR": 1, "BayerGB": 1}
TARGETS = ["RGB", "RGBA", "BGR", "BGRA", "Lum", "LumA"]  # the layouts a conversion writes


def shape(layout, height, width):
    return (height, width) if SAMPLES[layout] == 1 else (height, width, SAMPLES[layout])


def random_image(rng, layout, dtype, height=3, width=5):
    """Random samples over the whole range, the extremes and special float values planted first."""
    dtype, dims = np.dtype(dtype), shape(layout, height, width)
    if dtype.kind == "f":
        flat = rng.uniform(-1.5, 1.5, int(np.prod(dims)))
        specials = [np.nan, np.inf, -np.inf, -0.0, 0.0, 1.0, -1.0, 1e-46, 1e20, 0.5]
    else:
        info = np.iinfo(dtype)
        flat = rng.integers(info.min, int(info.max) + 1, int(np.prod(dims)), dtype=np.int64)
        specials = [info.min, info.max, 0, 1, info.max - 1, -1 if info.min < 0 else 2]
    flat[: len(specials)] = specials[: flat.size]
    with np.errstate(over="ignore"):
        return flat.astype(dtype).reshape(dims)


def same_bits(a, b):
    """Equality of every bit, so that NaNs and signed zeros count."""
    if a.dtype != b.dtype or a.shape != b.shape:
        return False
    unsigned = np.dtype(f"u{a.dtype.itemsize}")
    return np.array_equal(a.view(unsigned), b.view(unsigned))
