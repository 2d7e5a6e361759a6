"""The conversion rules in NumPy, apart from the engine: integer samples are fixed-point (-1..1
signed, 0..1 unsigned), floats the value itself, through a float64, truncated on store. Colour to
grey keeps red, grey to colour repeats, a missing alpha is the target's top, Bayer reads as grey."""

import numpy as np

DTYPES = [np.int8, np.uint8, np.int16, np.uint16, np.int32, np.uint32, np.float32, np.float64]
# (positive scale, negative scale) of the integer types; an unsigned type's two are the same.
_SCALES = {np.dtype(t): (float(np.iinfo(t).max), float(-np.iinfo(t).min or np.iinfo(t).max))
           for t in DTYPES[:6]}

# Where red, green, blue and alpha sit in a source pixel; a target's roles in memory order.
_RGB, _BGR, _GREY = {"r": 0, "g": 1, "b": 2}, {"r": 2, "g": 1, "b": 0}, {"r": 0, "g": 0, "b": 0}
SOURCE_ROLES = {"RGB": _RGB, "RGBA": dict(_RGB, a=3), "BGR": _BGR, "BGRA": dict(_BGR, a=3),
                "Lum": _GREY, "LumA": dict(_GREY, a=1),
                **{bayer: _GREY for bayer in ["BayerRG", "BayerBG", "BayerGR", "BayerGB"]}}
TARGET_ROLES = {"RGB": "rgb", "RGBA": "rgba", "BGR": "bgr", "BGRA": "bgra", "Lum": "r", "LumA": "ra"}


def decode(samples):
    positive, negative = _SCALES.get(samples.dtype, (1.0, 1.0))  # floats are their value
    x = samples.astype(np.float64)
    return np.where(x > 0, x / positive, x / negative)


def encode(x, dtype):
    """Samples of `dtype` for normalised values: scaled, saturated, truncated."""
    dtype = np.dtype(dtype)
    if dtype.kind == "f":
        with np.errstate(over="ignore"):
            return x.astype(dtype)
    (positive, negative), info = _SCALES[dtype], np.iinfo(dtype)
    y = np.where(x > 0, x * positive, x * negative)
    high, low, nan = y > positive, y < info.min, np.isnan(x)
    result = np.trunc(np.where(high | low | nan, 0, y)).astype(np.int64)
    # A NaN truncates to the lowest int32, whose low 8 and 16 bits are 0.
    result[high], result[low], result[nan] = info.max, info.min, info.min if dtype == np.int32 else 0
    return result.astype(dtype)


def convert(source, source_layout, target_layout, target_dtype):
    """The expected result of one conversion of an (H, W[, C]) array."""
    pixels, dtype = source.reshape(*source.shape[:2], -1), np.dtype(target_dtype)
    roles = SOURCE_ROLES[source_layout]
    converted = pixels if pixels.dtype == dtype else encode(decode(pixels), dtype)
    top = dtype.type(1.0) if dtype.kind == "f" else np.iinfo(dtype).max  # a missing alpha
    channels = [converted[:, :, roles[r]] if r in roles else np.full(pixels.shape[:2], top, dtype)
                for r in TARGET_ROLES[target_layout]]
    return channels[0].copy() if len(channels) == 1 else np.stack(channels, axis=2)


def random_image(rng, layout, dtype, height=3, width=5):
    """Random samples over the whole range, the extremes and special float values planted first."""
    dtype, samples = np.dtype(dtype), len(TARGET_ROLES.get(layout, "r"))
    shape = (height, width) + ((samples,) if samples > 1 else ())
    if dtype.kind == "f":
        flat = rng.uniform(-1.5, 1.5, int(np.prod(shape)))
        specials = [np.nan, np.inf, -np.inf, -0.0, 0.0, 1.0, -1.0, 1e-46, 1e20, 0.5]
    else:
        info = np.iinfo(dtype)
        flat = rng.integers(info.min, int(info.max) + 1, int(np.prod(shape)), dtype=np.int64)
        specials = [info.min, info.max, 0, 1, info.max - 1, -1 if info.min < 0 else 2]
    flat[: len(specials)] = specials[: flat.size]
    with np.errstate(over="ignore"):
        return flat.astype(dtype).reshape(shape)


def same_bits(a, b):
    """Equality of every bit, so that NaNs and signed zeros count."""
    bits = f"u{a.dtype.itemsize}"
    return a.dtype == b.dtype and a.shape == b.shape and np.array_equal(a.view(bits), b.view(bits))
