"""Per-family comparisons of the library with its peers, run by bench/compare."""

from . import arithmetic
from . import statistics
from . import fft

# Every family bench/compare knows, by the name given on its command line.
FAMILIES = {
    "arithmetic": arithmetic,
    "statistics": statistics,
    "fft": fft,
}
