"""Prints the coefficients of the polynomials for 2^f in isa_certified_avx2.cpp and
isa_certified_avx512.cpp: those of the least largest relative error, found by exchange of the points where
it is largest (Remez), in 60-digit arithmetic. Needs mpmath. The error of what is computed with them, in
single precision, is measured by `exp2_check` for every argument."""

import mpmath

mpmath.mp.dps = 60


def minimax(degree, low, high):
    low, high = mpmath.mpf(low), mpmath.mpf(high)
    count = degree + 2
    points = [(low + high) / 2 - (high - low) / 2 * mpmath.cos(mpmath.pi * k / (count - 1)) for k in range(count)]
    steps = 4000
    grid = [low + (high - low) * k / steps for k in range(steps + 1)]
    powers = [mpmath.mpf(2) ** x for x in grid]
    for _ in range(8):
        rows = mpmath.matrix(count, count)
        for i, x in enumerate(points):
            for j in range(degree + 1):
                rows[i, j] = x**j / mpmath.mpf(2) ** x
            rows[i, degree + 1] = (-1) ** i
        solution = mpmath.lu_solve(rows, mpmath.matrix([1] * count))
        coefficients = [solution[j] for j in range(degree + 1)]
        errors = [mpmath.polyval(coefficients[::-1], x) / p - 1 for x, p in zip(grid, powers)]
        # In each stretch of one sign, the point of the largest error.
        points, best = [], None
        for x, error in zip(grid, errors):
            if best is not None and (error > 0) != (best[1] > 0):
                points.append(best[0])
                best = None
            if best is None or abs(error) > abs(best[1]):
                best = (x, error)
        points.append(best[0])
        if len(points) != count:
            break
    return coefficients, max(abs(e) for e in errors)


def show(name, degree, low, high, digits):
    coefficients, error = minimax(degree, low, high)
    print(name, "relative error", mpmath.nstr(error, 3))
    for c in coefficients[::-1]:
        if digits == 24:
            mantissa, exponent = mpmath.frexp(c)
            c = mpmath.ldexp(mpmath.nint(mantissa * 2**24), int(exponent) - 24)
        print("  ", float(c).hex())


show("float, f in [0, 1]", 5, 0, 1, 24)
show("float, f in [-1/2, 1/2]", 5, -0.5, 0.5, 24)
show("double, f in [-1/2, 1/2]", 10, -0.5, 0.5, 53)
