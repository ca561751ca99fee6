#!/usr/bin/env python3
"""Polynomial coefficients and tables of the math kernels, printed as C++ literals.

Polynomials interpolate at Chebyshev nodes (within a few percent of the minimax error at these
degrees), solved exactly in rationals from 40-digit function values. Run with no arguments; the
output is pasted into engine/primitives/math/math_constants-inl.h.
"""
import math
import struct
from decimal import Decimal, getcontext
from fractions import Fraction

getcontext().prec = 50
D = Decimal


def ln(x):
    return D(x).ln()


def exp(x):
    return D(x).exp()


def chebyshev_fit(g, a, b, degree):
    nodes = [(a + b) / 2 + (b - a) / 2 * math.cos(math.pi * (k + 0.5) / (degree + 1))
             for k in range(degree + 1)]
    rows = [[Fraction(x) ** p for p in range(degree + 1)] + [Fraction(g(D(x)))] for x in nodes]
    n = degree + 1
    for col in range(n):
        pivot = max(range(col, n), key=lambda r: abs(rows[r][col]))
        rows[col], rows[pivot] = rows[pivot], rows[col]
        for r in range(n):
            if r != col and rows[r][col] != 0:
                f = rows[r][col] / rows[col][col]
                rows[r] = [u - f * v for u, v in zip(rows[r], rows[col])]
    return [rows[i][n] / rows[i][i] for i in range(n)]


def to_float32(x):
    return struct.unpack('f', struct.pack('f', float(x)))[0]


def max_relative_error(g, coefficients, a, b, samples=2000):
    worst = 0.0
    for s in range(samples + 1):
        x = D(a) + (D(b) - D(a)) * s / samples
        if x == 0:
            continue
        p = D(0)
        for c in reversed(coefficients):
            p = p * x + D(c)
        exact = g(x)
        worst = max(worst, float(abs((p - exact) / exact)))
    return worst


def hex_literal(x, suffix=''):
    mantissa, exponent = float(x).hex().split('p')
    return mantissa.rstrip('0').rstrip('.') + 'p' + exponent + suffix


def float_literal(x):
    return hex_literal(x, 'f')


def emit(name, coefficients, rounding):
    values = [rounding(c) for c in coefficients]
    text = ', '.join(float_literal(v) if rounding is to_float32 else hex_literal(v) for v in values)
    print(f'// {name}\n{{{text}}}')
    return values


def exp_q(r):  # (e^r - 1 - r) / r^2
    if r == 0:
        return D(0.5)
    return (exp(r) - 1 - r) / (r * r)


def log1p_cubic(f):  # (ln(1+f) - f + f^2/2) / f^3
    if f == 0:
        return D(1) / 3
    return (ln(1 + f) - f + f * f / 2) / (f * f * f)


def log1p_square(f):  # (ln(1+f) - f) / f^2
    if f == 0:
        return D(-0.5)
    return (ln(1 + f) - f) / (f * f)


def log1p_over_f(f):  # ln(1+f) / f
    if f == 0:
        return D(1)
    return ln(1 + f) / f


def log2_over_r(r):  # log2(1 + r) / r
    if r == 0:
        return 1 / ln(2)
    return ln(1 + r) / ln(2) / r


def exp2m1_over_f(f):  # (2^f - 1) / f
    if f == 0:
        return ln(2)
    return (exp(f * ln(2)) - 1) / f


def main():
    half_ln2 = math.log(2) / 2
    q = chebyshev_fit(exp_q, -half_ln2, half_ln2, 4)
    q32 = emit('float exp: (e^r - 1 - r) / r^2, |r| <= ln2/2', q, to_float32)
    err = max_relative_error(lambda r: exp(r), [1, 1] + q32, -half_ln2, half_ln2)
    print(f'//   e^r relative error {err:.3g} (2^{math.log2(err):.1f})')

    lo, hi = math.sqrt(0.5) - 1, math.sqrt(2) - 1
    c = chebyshev_fit(log1p_cubic, lo, hi, 8)
    c32 = [to_float32(v) for v in c]
    err = max_relative_error(log1p_cubic, c32, lo, hi)
    print(f'// float ln cubic part degree 8: relative error of P 2^{math.log2(err):.1f}')
    emit('float ln: (ln(1+f) - f + f^2/2) / f^3, degree 8', c, to_float32)
    # The reduced classes split x so that f = m - 1 lies in [-1/4, 1/2).
    c = chebyshev_fit(log1p_square, -0.25, 0.5, 8)
    c32 = [to_float32(v) for v in c]
    err = max_relative_error(log1p_square, c32, -0.25, 0.5, 6000)
    print(f'// float (ln(1+f) - f)/f^2 degree 8 on [-1/4, 1/2): relative error 2^{math.log2(err):.1f}')
    emit('float ln: (ln(1+f) - f) / f^2, degree 8', c, to_float32)
    for degree in (3, 7):
        c = chebyshev_fit(log1p_over_f, -0.25, 0.5, degree)
        c32 = [to_float32(v) for v in c]
        err = max_relative_error(log1p_over_f, c32, -0.25, 0.5, 6000)
        print(f'// float ln/f degree {degree} on [-1/4, 1/2): relative error 2^{math.log2(err):.1f}')
        emit(f'float ln: ln(1+f) / f, degree {degree}', c, to_float32)


def round_to_bits(x, bits):
    """x rounded to `bits` significant bits, as a Fraction."""
    x = Fraction(x)
    e = math.floor(math.log2(x))
    scale = Fraction(2) ** (bits - 1 - e)
    return Fraction(round(x * scale)) / scale


def split_on_grid(value, grid_exponent):
    """value as hi, a multiple of 2^grid_exponent, plus lo, the rest rounded to double."""
    step = D(2) ** grid_exponent
    hi = (value / step).to_integral_value() * step
    return float(hi), float(value - D(hi))


def tables():
    # ln: index i = j / 2 for m_j = 1 + j/1024; c_i = 1/m_j to 10 bits, so that (m - m_j) c_i and
    # m_j c_i - 1 are exact; -ln c_i as a multiple of 2^-43 plus a tail.
    print('// ln table: c, -ln(c) high, -ln(c) low')
    worst_r = 0
    for i in range(513):
        m = 1 + Fraction(2 * i, 1024)
        c = round_to_bits(1 / m, 10)
        lhi, llo = split_on_grid(-ln(D(c.numerator) / D(c.denominator)), -43)
        print(f'{{{hex_literal(float(c))}, {hex_literal(lhi)}, {hex_literal(llo)}}},')
        for t_edge in (Fraction(-1, 1024), Fraction(1, 1024)):
            worst_r = max(worst_r, abs(float((m + t_edge) * c - 1)))
    print(f'// |r| <= {worst_r} (2^{math.log2(worst_r):.2f})')
    ln2hi, ln2lo = split_on_grid(ln(2), -43)
    print(f'// ln2 high, low: {hex_literal(ln2hi)}, {hex_literal(ln2lo)}')
    print('// exp table: 2^(j/128) and the relative tail')
    for j in range(128):
        t = D(2) ** (D(j) / 128)
        hi = float(t)
        print(f'{{{hex_literal(hi)}, {hex_literal(float((t - D(hi)) / D(hi)))}}},')
    step = ln(2) / 128
    shi, slo = split_on_grid(step, -43)
    print(f'// ln2/128 high, low: {hex_literal(shi)}, {hex_literal(slo)}')
    print(f'// 128/ln2: {hex_literal(float(128 / ln(2)))}')
    # exp, 16 steps: 2^(j/16) with j << 48 taken from its bits, so that adding the bits of
    # 16 e + j shifted by 48 gives 2^e 2^(j/16); and the relative tail.
    print('// exp table, 16 steps: 2^(j/16) bits - (j << 48); tails')
    powers, tails = [], []
    for j in range(16):
        t = D(2) ** (D(j) / 16)
        hi = float(t)
        bits = struct.unpack('<Q', struct.pack('<d', hi))[0] - (j << 48)
        powers.append(hex_literal(struct.unpack('<d', struct.pack('<Q', bits))[0]))
        tails.append(hex_literal(float((t - D(hi)) / D(hi))))
    print(', '.join(powers))
    print(', '.join(tails))
    shi, slo = split_on_grid(ln(2) / 16, -43)
    print(f'// ln2/16 high, low: {hex_literal(shi)}, {hex_literal(slo)}; 16/ln2: '
          f'{hex_literal(float(16 / ln(2)))}')


def power_tables():
    # The light power: log2 from 16 intervals of the mantissa centred on c = 1 + i/16 (the one
    # at 2 folded onto the next binade's first), 1/c to 29 bits so that m/c is exact for float m;
    # 2^t from the exponential's 2^(j/16).
    print('// light power: 1/c, then log2 c, i = 0 ... 15')
    inverses = [Fraction(1)] + [round_to_bits(1 / (1 + Fraction(i, 16)), 29) for i in range(1, 16)]
    print(', '.join(hex_literal(float(c)) for c in inverses))
    print(', '.join(hex_literal(float(-ln(D(c.numerator) / D(c.denominator)) / ln(2)))
                    for c in inverses))
    r_lo = r_hi = 0.0
    for i, c in enumerate(inverses):
        centre = 1 + Fraction(i, 16)
        for m in (centre - Fraction(1, 64 if i == 0 else 32), centre + Fraction(1, 32)):
            r_lo, r_hi = min(r_lo, float(m * c - 1)), max(r_hi, float(m * c - 1))
    print(f'// r in [{r_lo}, {r_hi}]')
    p = chebyshev_fit(log2_over_r, r_lo, r_hi, 6)
    err = max_relative_error(log2_over_r, [float(v) for v in p], r_lo, r_hi)
    emit(f'log2(1+r) / r, relative error 2^{math.log2(err):.1f}', p, float)
    q = chebyshev_fit(exp2m1_over_f, -1 / 32, 1 / 32, 3)
    err = max_relative_error(lambda f: exp(f * ln(2)), [1] + [float(v) for v in q], -1 / 32, 1 / 32)
    emit(f'(2^f - 1) / f, |f| <= 1/32: 2^f to relative 2^{math.log2(err):.1f}', q, float)


if __name__ == '__main__':
    main()
    tables()
    power_tables()
