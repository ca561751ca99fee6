// Oracles of the transform tests: exact transforms in long double (a direct DFT up to 4096
// points, FFTW's long double transform above), FFTW's float and double transforms as the
// accuracy peer, and the expected spectra of impulses and shifts. Data in the canonical layout:
// interleaved (re, im) pairs, or real samples and the packed N + 2 spectrum.
#pragma once

#include <cstddef>
#include <vector>

namespace zal::test {

// Whether exact references exist above 4096 points and the peer's error can be measured.
bool HavePeer();

std::vector<long double> ReferenceComplex(const std::vector<long double>& in, bool inverse);
std::vector<long double> ReferenceRealForward(const std::vector<long double>& samples);
std::vector<long double> ReferenceRealInverse(const std::vector<long double>& packed);

// ||actual - exact|| / ||exact||.
template <class T>
double RelativeRmsError(const std::vector<T>& actual, const std::vector<long double>& exact);

// The relative RMS error of the peer's transform of src (the same kind and direction), or an
// estimate of a good transform's error where the peer is missing.
template <class T>
double PeerRelativeRmsError(bool real, bool inverse, int order, const std::vector<T>& src,
                            const std::vector<long double>& exact);

// The forward transform of a unit impulse at m: bins exp(-2 pi i m k / n).
std::vector<long double> ImpulseSpectrum(std::size_t n, std::size_t m, bool real);
// spectrum with bin k multiplied by exp(-2 pi i s k / n).
std::vector<long double> ShiftedSpectrum(const std::vector<long double>& spectrum, std::size_t n,
                                         std::size_t s);

}  // namespace zal::test
