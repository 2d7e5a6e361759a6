#!/usr/bin/python3
"""Converts a large image held as a dask.array in row chunks.

    dask_convert.py [--size WxH] [--rows N] [--scheduler ADDRESS]

The image (16-bit RGB, made chunk by chunk from a fixed seed) is converted to
32-bit float BGRA by map_blocks(ztcoreex.convert, ...), one task per band of
rows, and the result is checked to be bit-identical to one conversion of the
whole image. Without --scheduler it runs on Dask's local threaded scheduler;
with the address of a dask.distributed scheduler ("tcp://host:8786") the same
code runs on that cluster's workers, each of which needs ztcoreex installed.
"""

import argparse

import dask
import dask.array as da
import numpy as np

import ztcoreex

SAMPLES = {"RGB": 3, "RGBA": 4, "BGR": 3, "BGRA": 4, "Lum": 1, "LumA": 2,
           "BayerRG": 1, "BayerBG": 1, "BayerGR": 1, "BayerGB": 1}


def convert_blocks(image, source_layout, target_layout, target_type):
    """A lazy conversion of a dask.array chunked in rows only.

    Each block is a band of whole rows, so it is C-contiguous and ztcoreex
    converts it as an image of its own; the bands together are the whole
    image, since a conversion works pixel by pixel.
    """
    if any(len(sides) != 1 for sides in image.chunks[1:]):
        raise ValueError("the image must be chunked in rows only")
    width, samples = image.shape[1], SAMPLES[target_layout]
    kwargs = {}
    if samples == 1 and image.ndim == 3:
        kwargs["drop_axis"] = 2
    elif samples > 1 and image.ndim == 2:
        kwargs["new_axis"] = 2
    chunks = (image.chunks[0], (width,)) + (((samples,),) if samples > 1 else ())
    return image.map_blocks(ztcoreex.convert, source_layout, target_layout, target_type,
                            dtype=np.dtype(target_type), chunks=chunks, **kwargs)


def make_image(width, height, rows):
    random = da.random.RandomState(2024)
    return random.randint(0, 65536, size=(height, width, 3), chunks=(rows, width, 3),
                          dtype=np.uint16)


def main(argv=None):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--size", default="4096x4096", help="image size, WxH")
    parser.add_argument("--rows", type=int, default=256, help="rows per chunk")
    parser.add_argument("--scheduler", help="address of a dask.distributed scheduler")
    args = parser.parse_args(argv)
    width, height = (int(side) for side in args.size.lower().split("x"))

    client = None
    if args.scheduler:
        from dask.distributed import Client
        client = Client(args.scheduler)
    try:
        image = make_image(width, height, args.rows)
        converted = convert_blocks(image, "RGB", "BGRA", np.float32)
        banded, whole_image = dask.compute(converted, image)
        whole = ztcoreex.convert(whole_image, "RGB", "BGRA", np.float32)
        same = np.array_equal(banded.view(np.uint32), whole.view(np.uint32))
        where = args.scheduler or "the local scheduler"
        print(f"{width}x{height} RGB UShort to BGRA Float in {len(image.chunks[0])} bands "
              f"on {where}: {'bit-identical' if same else 'DIFFERENT'} to one conversion")
        return 0 if same else 1
    finally:
        if client is not None:
            client.close()


if __name__ == "__main__":
    raise SystemExit(main())
