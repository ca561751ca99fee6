"""Per-family comparisons of the library with its peers, run by bench/compare."""

from . import arithmetic, conversion, fft, math, movement, statistics, window
# Matrix product
from . import matrix

# Every family bench/compare knows, by the name given on its command line.
FAMILIES = {
    "arithmetic": arithmetic,
    "statistics": statistics,
    "math": math,
    "fft": fft,
    "movement": movement,
    "conversion": conversion,
    "window": window,
    # Matrix product
    "matrix": matrix,
}
