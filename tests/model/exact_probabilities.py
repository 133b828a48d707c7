#!/usr/bin/env python3
"""Writes exact_probabilities.inc: sigmoids, vote shares and coupled probabilities, bit for bit.

Everything is computed here from the definitions alone, one rounded operation after another in the
order that they state. Exponentials are rounded from 50 digits, and only arguments are taken for
which every C library worth the name (within 0.6 units in the last place) rounds the same way.
"""
import decimal
import math
import random
import re

decimal.getcontext().prec = 50
MARGIN = decimal.Decimal("0.1")  # units in the last place


class Unsafe(Exception):
    pass


def exp(x):
    exact = decimal.Decimal(x).exp()
    rounded = float(exact)
    ulp = decimal.Decimal(math.ulp(rounded))
    if abs(exact - decimal.Decimal(rounded)) > (decimal.Decimal("0.5") - MARGIN) * ulp:
        raise Unsafe
    return rounded


def sigmoid(f, a, b):
    x = f * a + b
    if x > 0:
        return exp(-x) / (exp(-x) + 1)
    return 1 / (exp(x) + 1)


def parameters(machine):
    return -(1 + machine / 8), machine / 16 - 0.25


def pairwise(classes, decisions):
    r = [[0.0] * classes for _ in range(classes)]
    machine = 0
    for i in range(classes):
        for j in range(i + 1, classes):
            p = sigmoid(decisions[machine], *parameters(machine))
            r[i][j] = min(max(p, 1e-7), 0.9999999)
            r[j][i] = 1 - r[i][j]
            machine += 1
    return r


def total(terms):
    result = 0.0
    for term in terms:  # sum() of Python 3.12 compensates for what is rounded
        result += term
    return result


def coupled(r):
    k = len(r)
    q = [[-r[i][j] * r[j][i] for j in range(k)] for i in range(k)]
    for i in range(k):
        q[i][i] = total(r[t][i] * r[t][i] for t in range(k))
    for i in range(k):
        for j in range(i):
            q[j][i] = q[i][j]

    def form():
        return total(p[i] * total(p[j] * q[i][j] for j in range(k)) for i in range(k))

    p = [1.0 / k] * k
    for _ in range(100):
        for t in range(k):
            others = total(q[t][j] * p[j] for j in range(k) if j != t)
            p[t] = (form() - others) / q[t][t]
            norm = total(p)
            p = [entry / norm for entry in p]
        product = [total(q[i][j] * p[j] for j in range(k)) for i in range(k)]
        if 0.005 / k > max(abs(entry - form()) for entry in product):
            break
    return p


def row(*parts):
    print("    {" + ",\n     ".join(parts) + "},")


def texts(numbers):
    return [re.sub(r"\.?0*p", "p", number.hex()) for number in numbers]


def listed(numbers):
    lines, line = [], ""
    for text in texts(numbers):
        if line and len(line) + len(text) > 85:
            lines.append(line)
            line = ""
        line += (", " if line else "") + text
    return "{" + ",\n      ".join(lines + [line]) + "}"


def main():
    generator = random.Random(5)

    def number():
        return generator.randint(-3000, 3000) / 1024

    def rows(count, make):
        while count > 0:
            try:
                row(*make())
                count -= 1
            except Unsafe:
                pass

    def sigmoid_row():
        f, a, b = number(), number(), number()
        return [", ".join(texts([f, a, b, sigmoid(f, a, b)]))]

    def coupling_row(classes):
        decisions = [number() for _ in range(classes * (classes - 1) // 2)]
        return listed(decisions), listed(coupled(pairwise(classes, decisions)))

    print("// Written by exact_probabilities.py.\n// clang-format off")
    print("const ExactSigmoid kSigmoids[] = {  // f, a, b, 1 / (1 + exp(f a + b))")
    rows(12, sigmoid_row)
    print("};\nconst ExactPercents kShares[] = {  // decisions, votes / machines")
    for classes in (5, 8):
        machines = classes * (classes - 1) // 2
        row(listed([1.0] * machines), listed([v / machines for v in reversed(range(classes))]))
    print("};\nconst ExactPercents kCoupled[] = {  // decisions, probabilities")
    for classes in (3, 4, 5, 7):
        rows(2, lambda classes=classes: coupling_row(classes))
    print("};\n// clang-format on")


if __name__ == "__main__":
    main()
