"""Per-family comparisons of the library with its peers, run by bench/compare."""

from . import arithmetic
from . import fft

# Every family bench/compare knows, by the name given on its command line.
FAMILIES = {
    "arithmetic": arithmetic,
    "fft": fft,
}
