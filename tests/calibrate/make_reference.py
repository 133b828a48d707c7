"""Writes sigmoid_reference.inc: the cases that sigmoid_fit_test.cpp makes too, with what scikit-learn's
_SigmoidCalibration makes of them. Run it where scikit-learn is installed: python3 make_reference.py > sigmoid_reference.inc
"""
import numpy
from sklearn.calibration import _SigmoidCalibration

# name, cases, share of positive ones in 1/1000, separation, scale, offset, steps a unit (0: none)
SETS = [
    ('balanced', 2000, 500, 1.5, 1, 0, 0),
    ('one_in_100', 20000, 10, 2, 1, 0, 0),
    ('99_in_100', 5000, 990, 2, 1, 0, 0),
    ('separable', 500, 500, 9, 1, 0, 0),
    ('barely_separable', 100, 400, 4, 1, 0, 0),
    ('separable_one_in_50', 1000, 20, 9, 1, 0, 0),
    ('no_signal', 3000, 500, 0, 1, 0, 0),
    ('weak_signal', 3000, 300, 0.125, 1, 0, 0),
    ('reversed', 1000, 500, -2, 1, 0, 0),
    ('tied', 2000, 500, 1.5, 1, 0, 1),
    ('tied_in_halves', 400, 250, 1, 1, 0, 2),
    ('two_values', 200, 500, 2, 0.25, 0, 0.5),
    ('constant', 300, 300, 0, 0, 0.75, 0),
    ('constant_zero', 50, 500, 0, 0, 0, 0),
    ('twenty', 20, 500, 1.5, 1, 0, 0),
    ('twenty_separable', 20, 300, 9, 1, 0, 0),
    ('small_values', 1000, 500, 1.5, 0.0625, 0, 0),
    ('large_values', 1000, 500, 1.5, 8, 0, 0),
    ('offset', 1000, 400, 1.5, 1, 3, 0),
    ('negative_offset', 1000, 600, 1.5, 0.5, -2, 0),
    ('hundred_thousand', 100000, 300, 1.25, 1, 0.5, 0),
]


def cases(count, share, separation, scale, offset, steps):
    """The same arithmetic as in the test, operation by operation."""
    state, values, labels = 1, [], []

    def uniform():
        nonlocal state
        state = (state * 6364136223846793005 + 1442695040888963407) % 2**64
        return (state >> 11) * 2.0**-53

    for i in range(count):
        positive = i * share // 1000 != (i + 1) * share // 1000
        f = uniform() + uniform() + uniform() + uniform() - 2.0
        f += separation / 2.0 if positive else -separation / 2.0
        if steps:
            f = numpy.floor(f * steps) / steps
        values.append(f * scale + offset)
        labels.append(1 if positive else 0)
    return numpy.array(values, dtype=float), numpy.array(labels)


for name, *shape in SETS:
    values, labels = cases(*shape)
    fitted = _SigmoidCalibration().fit(values, labels)
    print('{"%s", %d, %d, %r, %r, %r, %r, %r, %r},' % (name, *shape, float(fitted.a_), float(fitted.b_)))
