#!/usr/bin/env python3
"""Pillow at work for the comparison: see worker.h for what is said on standard input and output. "version" is answered
with Pillow's."""
import sys
import time

import PIL
from PIL import Image, ImageFilter

TILES = 5

# Each takes an image and the words behind its name, and makes a new image.
JOBS = {
    "resize": lambda image, width, height, kernel: image.resize(
        (int(width), int(height)), getattr(Image.Resampling, kernel), reducing_gap=None),
    "blur": lambda image, radius: image.filter(ImageFilter.BoxBlur(int(radius))),
    "rotate": lambda image, degrees: image.rotate(float(degrees), Image.Resampling.BILINEAR, expand=True),
    "mirror": lambda image, direction: image.transpose(Image.Transpose(int(direction))),
}


def main():
    source = result = job = None
    for line in iter(sys.stdin.buffer.readline, b""):
        command, *words = line.decode().split()
        if command == "prepare":
            mode, width, height, name, *arguments = words
            size = int(width), int(height)
            count = size[0] * size[1] * len(Image.new(mode, (1, 1)).getbands())
            result = None
            source = Image.frombytes(mode, size, sys.stdin.buffer.read(count))
            job = lambda name=name, arguments=arguments: JOBS[name](source, *arguments)
            answer = "ready"
        elif command == "run":
            result = None
            processor, wall = time.process_time(), time.monotonic()
            result = job()
            answer = f"{time.process_time() - processor:.9f} {time.monotonic() - wall:.9f}"
        elif command == "version":
            answer = PIL.__version__
        else:
            tiles = result.resize((TILES, TILES), Image.Resampling.BOX)
            answer = " ".join(map(str, tiles.tobytes()))
        print(answer, flush=True)


if __name__ == "__main__":
    main()
