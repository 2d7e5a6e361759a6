"""A NumPy statement of the conversion rules, written apart from the engine.

Samples: an integer sample is a fixed-point number, -1..1 for the signed
types and 0..1 for the unsigned ones; float32 and float64 hold that value
itself. A sample passes through a float64 on the way, and stores truncate.
Channels: pure selection. Colour to grey keeps red, grey to colour repeats,
a missing alpha becomes the top of the target's range, Bayer reads as grey.
"""

import numpy as np

DTYPES = [np.int8, np.uint8, np.int16, np.uint16, np.int32, np.uint32, np.float32, np.float64]

# (positive scale, negative scale) of the signed types, scale of the unsigned.
_SIGNED = {np.dtype(np.int8): (127.0, 128.0), np.dtype(np.int16): (32767.0, 32768.0),
           np.dtype(np.int32): (2147483647.0, 2147483648.0)}
_UNSIGNED = {np.dtype(np.uint8): 255.0, np.dtype(np.uint16): 65535.0,
             np.dtype(np.uint32): 4294967295.0}

# Where red, green, blue and alpha sit in a source pixel.
SOURCE_ROLES = {
    "RGB": {"r": 0, "g": 1, "b": 2},
    "RGBA": {"r": 0, "g": 1, "b": 2, "a": 3},
    "BGR": {"r": 2, "g": 1, "b": 0},
    "BGRA": {"r": 2, "g": 1, "b": 0, "a": 3},
    "Lum": {"r": 0, "g": 0, "b": 0},
    "LumA": {"r": 0, "g": 0, "b": 0, "a": 1},
}
for _bayer in ("BayerRG", "BayerBG", "BayerGR", "BayerGB"):
    SOURCE_ROLES[_bayer] = SOURCE_ROLES["Lum"]

# The roles of a target pixel's samples in memory order; grey is red.
TARGET_ROLES = {"RGB": "rgb", "RGBA": "rgba", "BGR": "bgr", "BGRA": "bgra", "Lum": "r", "LumA": "ra"}

SAMPLES = {"RGB": 3, "RGBA": 4, "BGR": 3, "BGRA": 4, "Lum": 1, "LumA": 2,
           "BayerRG": 1, "BayerBG": 1, "BayerGR": 1, "BayerGB": 1}


def decode(samples):
    """The normalised float64 value of each sample."""
    kind = samples.dtype
    x = samples.astype(np.float64)
    if kind in _SIGNED:
        positive, negative = _SIGNED[kind]
        return np.where(x > 0, x / positive, x / negative)
    if kind in _UNSIGNED:
        return x / _UNSIGNED[kind]
    return x


def encode(x, dtype):
    """Samples of `dtype` for normalised values: scaled, saturated, truncated."""
    dtype = np.dtype(dtype)
    if dtype.kind == "f":
        with np.errstate(over="ignore"):
            return x.astype(dtype)
    nan = np.isnan(x)
    if dtype in _SIGNED:
        positive, negative = _SIGNED[dtype]
        y = np.where(x > 0, x * positive, x * negative)
        high, low = y > positive, (-negative > y) & ~(y > positive)
        # A NaN truncates to the integer with only its top bit set: the lowest
        # int32, whose low 8 and 16 bits are 0.
        nan_value = np.iinfo(np.int32).min if dtype == np.int32 else 0
        top, bottom = np.iinfo(dtype).max, np.iinfo(dtype).min
    else:
        scale = _UNSIGNED[dtype]
        y = x * scale
        high, low = y > scale, (0 > y) & ~(y > scale)
        nan_value, top, bottom = 0, np.iinfo(dtype).max, 0
    result = np.zeros(x.shape, np.int64)
    inside = ~(high | low | nan)
    result[inside] = np.trunc(y[inside]).astype(np.int64)
    result[high], result[low], result[nan] = top, bottom, nan_value
    return result.astype(dtype)


def convert_samples(samples, dtype):
    if samples.dtype == np.dtype(dtype):
        return samples.copy()
    return encode(decode(samples), dtype)


def alpha_fill(dtype):
    dtype = np.dtype(dtype)
    return dtype.type(1.0) if dtype.kind == "f" else np.iinfo(dtype).max


def convert(source, source_layout, target_layout, target_dtype):
    """The expected result of one conversion of an (H, W[, C]) array."""
    pixels = source.reshape(source.shape[0], source.shape[1], -1)
    converted = convert_samples(pixels, target_dtype)
    roles = SOURCE_ROLES[source_layout]
    channels = []
    for role in TARGET_ROLES[target_layout]:
        if role in roles:
            channels.append(converted[:, :, roles[role]])
        else:
            channels.append(np.full(pixels.shape[:2], alpha_fill(target_dtype), target_dtype))
    result = np.stack(channels, axis=2)
    return result[:, :, 0] if len(channels) == 1 else result


def random_image(rng, layout, dtype, height=3, width=5):
    """Random samples over the whole range, with the extremes and, for the
    float types, the special values planted first."""
    dtype = np.dtype(dtype)
    shape = (height, width) if SAMPLES[layout] == 1 else (height, width, SAMPLES[layout])
    count = int(np.prod(shape))
    if dtype.kind == "f":
        flat = rng.uniform(-1.5, 1.5, count)
        specials = [np.nan, np.inf, -np.inf, -0.0, 0.0, 1.0, -1.0, 1e-46, 1e20, 0.5]
    else:
        info = np.iinfo(dtype)
        flat = rng.integers(info.min, int(info.max) + 1, count, dtype=np.int64)
        specials = [info.min, info.max, 0, 1, info.max - 1, -1 if info.min < 0 else 2]
    flat = flat.astype(np.float64 if dtype.kind == "f" else np.int64)
    flat[: len(specials)] = specials[:count]
    with np.errstate(over="ignore"):
        return flat.astype(dtype).reshape(shape)


def same_bits(a, b):
    """Equality of every bit, so that NaNs and signed zeros count."""
    if a.dtype != b.dtype or a.shape != b.shape:
        return False
    return np.array_equal(a.view(np.dtype(f"u{a.dtype.itemsize}")),
                          b.view(np.dtype(f"u{b.dtype.itemsize}")))
