"""Per-family comparisons of the library with its peers, run by bench/compare."""

from . import arithmetic, conversion, fft, math, movement, statistics, window
from . import convolution

# Every family bench/compare knows, by the name given on its command line.
FAMILIES = {
    "arithmetic": arithmetic,
    "statistics": statistics,
    "math": math,
    "fft": fft,
    "movement": movement,
    "conversion": conversion,
    "window": window,
    # Convolution and resampling
    "convolution": convolution,
}
