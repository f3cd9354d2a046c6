#!/usr/bin/env python3
"""Tells what is to be seen in boxes of a picture: the median red, green and blue of each, as JSON.

    picture.py PICTURE.png '[[x, y, width, height], ...]'

Reads what a browser writes: 8 bits a channel, with or without alpha, not interlaced.
"""

import json
import statistics
import struct
import sys
import zlib


def chunks(data):
    position = 8
    while position < len(data):
        (size,) = struct.unpack_from(">I", data, position)
        yield data[position + 4 : position + 8], data[position + 8 : position + 8 + size]
        position += size + 12


def paeth(left, above, corner):
    estimate = left + above - corner
    to_left, to_above, to_corner = abs(estimate - left), abs(estimate - above), abs(estimate - corner)
    if to_left <= to_above and to_left <= to_corner:
        return left
    return above if to_above <= to_corner else corner


def unfiltered(kind, line, above, step):
    if kind == 0:
        return line
    if kind == 2:
        return bytearray((byte + upper) & 255 for byte, upper in zip(line, above))
    for index, byte in enumerate(line):
        left = line[index - step] if index >= step else 0
        if kind == 1:
            predicted = left
        elif kind == 3:
            predicted = (left + above[index]) // 2
        else:
            predicted = paeth(left, above[index], above[index - step] if index >= step else 0)
        line[index] = (byte + predicted) & 255
    return line


def read(path):
    """The lines of a picture, and the bytes of a pixel."""
    with open(path, "rb") as file:
        data = file.read()
    header, packed = None, b""
    for kind, content in chunks(data):
        if kind == b"IHDR":
            header = struct.unpack(">IIBBBBB", content)
        elif kind == b"IDAT":
            packed += content
    width, height, depth, color, _, _, interlace = header
    if depth != 8 or color not in (2, 6) or interlace:
        sys.exit("this is not a picture that a browser writes")
    step = 3 if color == 2 else 4
    raw = zlib.decompress(packed)
    lines, above = [], bytearray(width * step)
    for row in range(height):
        start = row * (width * step + 1)
        above = unfiltered(raw[start], bytearray(raw[start + 1 : start + 1 + width * step]), above, step)
        lines.append(above)
    return lines, step


def seen(lines, step, box):
    left, top, width, height = (round(number) for number in box)
    inside = [line[left * step : (left + width) * step] for line in lines[top : top + height]]
    if len(inside) != height or any(len(line) != width * step for line in inside):
        sys.exit(f"the box {box} is not in the picture")
    return [statistics.median(byte for line in inside for byte in line[channel::step]) for channel in range(3)]


def main():
    lines, step = read(sys.argv[1])
    print(json.dumps([seen(lines, step, box) for box in json.loads(sys.argv[2])]))


main()
