"""The conversion rules in NumPy, apart from the engine: integer samples are fixed-point (-1..1
signed, 0..1 unsigned), floats the value itself, through a float64, truncated on store. Colour to
grey keeps red, grey to colour repeats, a missing alpha is the target's top, Bayer reads as grey."""

import numpy as np

DTYPES = [np.int8, np.uint8, np.int16, np.uint16, np.int32, np.uint32, np.float32, np.float64]
# (positive scale, negative scale) of the integer types; an unsigned type's two are the same.
_SCALES = {np.dtype(t): (float(np.iinfo(t).max), float(-np.iinfo(t).min or np.iinfo(t).max))
           for t in DTYPES[:6]}

# Where red, green, blue and alpha sit in a source pixel, and the roles of a target pixel's
# samples in memory order (grey is red).
_RGB, _BGR, _GREY = {"r": 0, "g": 1, "b": 2}, {"r": 2, "g": 1, "b": 0}, {"r": 0, "g": 0, "b": 0}
BAYERS = ["BayerRG", "BayerBG", "BayerGR", "BayerGB"]
SOURCE_ROLES = {"RGB": _RGB, "RGBA": dict(_RGB, a=3), "BGR": _BGR, "BGRA": dict(_BGR, a=3),
                "Lum": _GREY, "LumA": dict(_GREY, a=1), **{bayer: _GREY for bayer in BAYERS}}
TARGET_ROLES = {"RGB": "rgb", "RGBA": "rgba", "BGR": "bgr", "BGRA": "bgra", "Lum": "r", "LumA": "ra"}
SAMPLES = {layout: len(TARGET_ROLES.get(layout, "r")) for layout in SOURCE_ROLES}
TARGETS = list(TARGET_ROLES)  # the layouts a conversion writes


def shape(layout, height, width):
    return (height, width) if SAMPLES[layout] == 1 else (height, width, SAMPLES[layout])


def decode(samples):
    """The normalised float64 value of each sample."""
    x = samples.astype(np.float64)
    if samples.dtype not in _SCALES:
        return x
    positive, negative = _SCALES[samples.dtype]
    return np.where(x > 0, x / positive, x / negative)


def encode(x, dtype):
    """Samples of `dtype` for normalised values: scaled, saturated, truncated."""
    dtype = np.dtype(dtype)
    if dtype.kind == "f":
        with np.errstate(over="ignore"):
            return x.astype(dtype)
    (positive, negative), info, nan = _SCALES[dtype], np.iinfo(dtype), np.isnan(x)
    y = np.where(x > 0, x * positive, x * negative)
    high = y > positive
    low = (float(info.min) > y) & ~high
    result = np.zeros(x.shape, np.int64)
    inside = ~(high | low | nan)
    result[inside] = np.trunc(y[inside]).astype(np.int64)
    # A NaN truncates to the lowest int32, whose low 8 and 16 bits are 0.
    result[high], result[low], result[nan] = info.max, info.min, info.min if dtype == np.int32 else 0
    return result.astype(dtype)


def convert(source, source_layout, target_layout, target_dtype):
    """The expected result of one conversion of an (H, W[, C]) array."""
    pixels = source.reshape(source.shape[0], source.shape[1], -1)
    same = pixels.dtype == np.dtype(target_dtype)
    converted = pixels.copy() if same else encode(decode(pixels), target_dtype)
    roles, dtype = SOURCE_ROLES[source_layout], np.dtype(target_dtype)
    alpha = dtype.type(1.0) if dtype.kind == "f" else np.iinfo(dtype).max  # the top of the range
    channels = [converted[:, :, roles[role]] if role in roles else
                np.full(pixels.shape[:2], alpha, dtype)
                for role in TARGET_ROLES[target_layout]]
    result = np.stack(channels, axis=2)
    return result[:, :, 0] if len(channels) == 1 else result


def random_image(rng, layout, dtype, height=3, width=5):
    """Random samples over the whole range, the extremes and special float values planted first."""
    dtype = np.dtype(dtype)
    count = int(np.prod(shape(layout, height, width)))
    if dtype.kind == "f":
        flat = rng.uniform(-1.5, 1.5, count)
        specials = [np.nan, np.inf, -np.inf, -0.0, 0.0, 1.0, -1.0, 1e-46, 1e20, 0.5]
    else:
        info = np.iinfo(dtype)
        flat = rng.integers(info.min, int(info.max) + 1, count, dtype=np.int64)
        specials = [info.min, info.max, 0, 1, info.max - 1, -1 if info.min < 0 else 2]
    flat[: len(specials)] = specials[:count]
    with np.errstate(over="ignore"):
        return flat.astype(dtype).reshape(shape(layout, height, width))


def same_bits(a, b):
    """Equality of every bit, so that NaNs and signed zeros count."""
    if a.dtype != b.dtype or a.shape != b.shape:
        return False
    unsigned = np.dtype(f"u{a.dtype.itemsize}")
    return np.array_equal(a.view(unsigned), b.view(unsigned))
