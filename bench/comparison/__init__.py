"""Per-family comparisons of the library with its peers, run by bench/compare."""

from . import arithmetic, conversion, fft, math, movement, statistics, window
# Multirate FIR filter.
from . import multirate
# Single-rate FIR filter
from . import fir
# IIR filter
from . import iir
from . import convolution
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
    # Multirate FIR filter.
    "multirate": multirate,
    # Single-rate FIR filter
    "fir": fir,
    # IIR filter
    "iir": iir,
    # Convolution and resampling
    "convolution": convolution,
    # Matrix product
    "matrix": matrix,
}
