import sys
import threading

import numpy as np

import reference as ref
import ztcoreex


def test_threads_convert_bands_of_one_image_into_one_array():
    rng = np.random.default_rng(11)
    source = ref.random_image(rng, "RGBA", np.uint16, 1003, 257)
    whole = ztcoreex.convert(source, "RGBA", "BGR", np.float32)
    out = np.full(whole.shape, np.nan, np.float32)
    edges = np.linspace(0, source.shape[0], 8, dtype=int)
    errors = []

    def band(top, bottom):
        try:
            for _ in range(5):
                ztcoreex.convert(source[top:bottom], "RGBA", "BGR", np.float32, out=out[top:bottom])
        except Exception as error:  # reported below, on the main thread
            errors.append(error)

    threads = [threading.Thread(target=band, args=(top, bottom))
               for top, bottom in zip(edges[:-1], edges[1:])]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert errors == []
    assert ref.same_bits(out, whole)
    assert ref.same_bits(whole, ref.convert(source, "RGBA", "BGR", np.float32))


def test_the_gil_is_released_while_converting():
    # With a long switch interval a thread that holds the GIL keeps it, so
    # the main thread, waiting in start() for the GIL, gets back before the
    # worker is done only if a conversion lets the GIL go.
    source = np.zeros((1024, 1024, 4), np.uint8)
    out = np.empty((1024, 1024, 4), np.float64)
    done = threading.Event()

    def convert():
        for _ in range(20):
            ztcoreex.convert(source, "RGBA", "BGRA", np.float64, out=out)
        done.set()

    interval = sys.getswitchinterval()
    sys.setswitchinterval(2.0)
    try:
        worker = threading.Thread(target=convert)
        worker.start()
        back_before_the_end = not done.is_set()
        worker.join()
    finally:
        sys.setswitchinterval(interval)
    assert back_before_the_end
