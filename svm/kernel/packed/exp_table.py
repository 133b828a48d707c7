#!/usr/bin/env python3
"""Writes the table of exp_table.cpp to standard output: 128 pairs of 64-bit words.

Pair k represents 2^(k/128). With H that number rounded to double, the second word is the bits of H
less (k << 52) / 128, so that adding an exponent in 128ths gives a scale; the first is the bits of
T = 2^(k/128) / H - 1 rounded to double, the part that H lacks.
"""
import struct
from decimal import Decimal, getcontext

getcontext().prec = 60
COUNT = 128


def bits(x):
    return struct.unpack("<Q", struct.pack("<d", x))[0]


for k in range(COUNT):
    exact = Decimal(2) ** (Decimal(k) / COUNT)
    head = float(exact)
    tail = float(exact / Decimal(head) - 1) if k else 0.0
    scale = (bits(head) - (k << 52) // COUNT) % 2**64
    print(f"    0x{bits(tail):016x}, 0x{scale:016x},")
