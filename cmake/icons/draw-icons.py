#!/usr/bin/env python3
"""Draws the program's pictures into src/resources (run it again after a
change here; the results are committed, so the build needs no Python):

  actions.bmp      16 x 16 pictures in one strip, 24 bits, magenta (255, 0, 255)
                   for the transparent background: one per category (2 to 17),
                   then comment, loop, label, and the star of Favorites.
  toolbar.bmp      the toolbar's 16 x 16 pictures in the same style: new, open,
                   save, cut, copy, paste, undo, redo, run, run from here,
                   stop, check script, options, record as steps.
  zantorunner.ico  the program's icon at 16, 32 and 48 pixels, 32 bits with
                   alpha.

    draw-icons.py SOURCE-ROOT
"""
import os
import struct
import sys

from PIL import Image, ImageDraw

KEY = (255, 0, 255)


def tile():
    im = Image.new("RGB", (16, 16), KEY)
    return im, ImageDraw.Draw(im)


def run_program():  # a window with a green start arrow
    im, d = tile()
    d.rectangle([1, 2, 13, 13], fill=(255, 255, 255), outline=(90, 90, 90))
    d.rectangle([1, 2, 13, 4], fill=(70, 110, 170))
    d.polygon([(6, 6), (6, 15), (14, 10)], fill=(30, 160, 60), outline=(10, 90, 30))
    return im


def windows():  # two overlapping windows
    im, d = tile()
    d.rectangle([5, 1, 15, 10], fill=(230, 235, 245), outline=(60, 80, 120))
    d.rectangle([5, 1, 15, 3], fill=(90, 130, 200))
    d.rectangle([0, 5, 10, 14], fill=(255, 255, 255), outline=(40, 60, 110))
    d.rectangle([0, 5, 10, 7], fill=(40, 90, 190))
    d.point([(9, 6)], fill=(255, 255, 255))
    return im


def keyboard():  # a keyboard with keys
    im, d = tile()
    d.rectangle([0, 4, 15, 12], fill=(200, 200, 205), outline=(70, 70, 80))
    for y in (6, 8):
        for x in range(2, 14, 2):
            d.point([(x, y)], fill=(40, 40, 50))
    d.line([(4, 10), (11, 10)], fill=(40, 40, 50))
    return im


def menu():  # a menu with a highlighted row
    im, d = tile()
    d.rectangle([2, 0, 14, 15], fill=(250, 250, 250), outline=(100, 100, 100))
    d.rectangle([3, 5, 13, 8], fill=(50, 110, 210))
    for y in (2, 11, 13):
        d.line([(5, y), (12, y)], fill=(90, 90, 90))
    d.line([(5, 6), (11, 6)], fill=(255, 255, 255))
    return im


def mouse():  # a mouse with its cord
    im, d = tile()
    d.ellipse([3, 4, 12, 15], fill=(245, 245, 245), outline=(60, 60, 60))
    d.line([(3, 9), (12, 9)], fill=(60, 60, 60))
    d.line([(7, 4), (7, 9)], fill=(60, 60, 60))
    d.line([(7, 4), (7, 2), (10, 0)], fill=(60, 60, 60))
    return im


def wait():  # an hourglass
    im, d = tile()
    d.rectangle([2, 0, 13, 1], fill=(120, 70, 20))
    d.rectangle([2, 14, 13, 15], fill=(120, 70, 20))
    d.polygon([(3, 2), (12, 2), (8, 8), (7, 8)], fill=(255, 255, 255), outline=(90, 90, 90))
    d.polygon([(7, 8), (8, 8), (12, 13), (3, 13)], fill=(255, 255, 255), outline=(90, 90, 90))
    d.polygon([(5, 4), (10, 4), (8, 7), (7, 7)], fill=(240, 190, 40))
    d.polygon([(4, 13), (11, 13), (8, 10), (7, 10)], fill=(240, 190, 40))
    return im


def prompt():  # a speech bubble with an exclamation mark
    im, d = tile()
    d.rounded_rectangle([0, 1, 15, 11], radius=3, fill=(255, 240, 150), outline=(150, 120, 20))
    d.polygon([(3, 11), (7, 11), (3, 15)], fill=(255, 240, 150), outline=(150, 120, 20))
    d.line([(3, 11), (6, 11)], fill=(255, 240, 150))
    d.line([(8, 3), (8, 7)], fill=(160, 40, 20), width=2)
    d.rectangle([8, 9, 9, 9], fill=(160, 40, 20))
    return im


def recordings():  # a record button
    im, d = tile()
    d.ellipse([1, 1, 14, 14], fill=(255, 255, 255), outline=(90, 90, 90))
    d.ellipse([4, 4, 11, 11], fill=(220, 30, 30), outline=(150, 10, 10))
    return im


def files():  # a folder with a page
    im, d = tile()
    d.polygon([(0, 3), (5, 3), (7, 5), (15, 5), (15, 14), (0, 14)], fill=(235, 180, 50), outline=(150, 100, 20))
    d.rectangle([3, 1, 12, 9], fill=(255, 255, 255), outline=(120, 120, 120))
    d.polygon([(0, 7), (15, 7), (15, 14), (0, 14)], fill=(250, 205, 80), outline=(150, 100, 20))
    return im


def internet():  # a globe
    im, d = tile()
    d.ellipse([0, 0, 15, 15], fill=(70, 140, 220), outline=(20, 70, 150))
    d.polygon([(4, 3), (8, 2), (9, 5), (6, 7), (4, 6)], fill=(60, 170, 70))
    d.polygon([(9, 8), (13, 7), (13, 11), (10, 13)], fill=(60, 170, 70))
    d.arc([4, 0, 11, 15], 0, 360, fill=(220, 235, 255))
    d.line([(0, 7), (15, 7)], fill=(220, 235, 255))
    return im


def database():  # a cylinder
    im, d = tile()
    d.rectangle([2, 3, 13, 12], fill=(150, 170, 200))
    d.ellipse([2, 10, 13, 15], fill=(150, 170, 200), outline=(50, 70, 110))
    d.rectangle([3, 3, 12, 12], fill=(150, 170, 200))
    d.line([(2, 3), (2, 12)], fill=(50, 70, 110))
    d.line([(13, 3), (13, 12)], fill=(50, 70, 110))
    d.ellipse([2, 0, 13, 5], fill=(200, 215, 235), outline=(50, 70, 110))
    d.arc([2, 5, 13, 10], 0, 180, fill=(50, 70, 110))
    return im


def flow():  # a jump: an arrow that turns
    im, d = tile()
    d.line([(3, 14), (3, 5), (10, 5)], fill=(120, 50, 170), width=3)
    d.polygon([(10, 1), (15, 5), (10, 9)], fill=(120, 50, 170))
    return im


def if_():  # a decision diamond
    im, d = tile()
    d.polygon([(8, 0), (15, 7), (8, 15), (0, 7)], fill=(250, 150, 30), outline=(160, 80, 0))
    d.line([(7, 4), (8, 4), (9, 5), (8, 7), (7, 8), (7, 9)], fill=(255, 255, 255))
    d.point([(7, 11)], fill=(255, 255, 255))
    return im


def system():  # a gear
    im, d = tile()
    for box in ([6, 0, 9, 15], [0, 6, 15, 9]):
        d.rectangle(box, fill=(110, 115, 125))
    d.polygon([(2, 3), (3, 2), (13, 12), (12, 13)], fill=(110, 115, 125))
    d.polygon([(12, 2), (13, 3), (3, 13), (2, 12)], fill=(110, 115, 125))
    d.ellipse([2, 2, 13, 13], fill=(150, 155, 165), outline=(70, 75, 85))
    d.ellipse([5, 5, 10, 10], fill=KEY, outline=(70, 75, 85))
    return im


def functions():  # "fx" on a card
    im, d = tile()
    d.rectangle([0, 1, 15, 14], fill=(235, 245, 255), outline=(40, 90, 160))
    d.line([(5, 3), (4, 3), (3, 4), (3, 12)], fill=(20, 50, 130))
    d.line([(2, 6), (5, 6)], fill=(20, 50, 130))
    d.line([(7, 7), (12, 12)], fill=(20, 50, 130))
    d.line([(12, 7), (7, 12)], fill=(20, 50, 130))
    return im


def external():  # a plug
    im, d = tile()
    d.rectangle([3, 5, 12, 11], fill=(150, 110, 70), outline=(80, 50, 20))
    d.rectangle([5, 1, 6, 5], fill=(190, 190, 190), outline=(90, 90, 90))
    d.rectangle([9, 1, 10, 5], fill=(190, 190, 190), outline=(90, 90, 90))
    d.line([(7, 11), (7, 15)], fill=(40, 40, 40), width=2)
    return im


def comment():  # a note with lines
    im, d = tile()
    d.polygon([(2, 0), (11, 0), (14, 3), (14, 15), (2, 15)], fill=(225, 250, 210), outline=(70, 140, 60))
    for y in (4, 7, 10, 13):
        d.line([(4, y), (12, y)], fill=(90, 160, 80))
    return im


def loop():  # two arrows round a circle
    im, d = tile()
    d.arc([1, 1, 14, 14], 200, 340, fill=(120, 50, 170), width=2)
    d.arc([1, 1, 14, 14], 20, 160, fill=(120, 50, 170), width=2)
    d.polygon([(12, 2), (15, 6), (10, 6)], fill=(120, 50, 170))
    d.polygon([(3, 13), (0, 9), (5, 9)], fill=(120, 50, 170))
    return im


def label():  # a tag
    im, d = tile()
    d.polygon([(0, 5), (4, 1), (15, 1), (15, 10), (4, 10)], fill=(40, 170, 160), outline=(10, 100, 90))
    d.ellipse([3, 4, 5, 6], fill=(255, 255, 255))
    d.line([(7, 13), (14, 13)], fill=(10, 100, 90))
    return im


def star():  # Favorites
    im, d = tile()
    d.polygon([(8, 0), (10, 5), (15, 6), (11, 10), (12, 15), (8, 12), (4, 15), (5, 10), (1, 6), (6, 5)],
              fill=(250, 210, 40), outline=(170, 120, 0))
    return im


def page(d, fill=(255, 255, 255)):
    d.polygon([(2, 0), (10, 0), (13, 3), (13, 15), (2, 15)], fill=fill, outline=(90, 90, 90))
    d.line([(10, 0), (10, 3), (13, 3)], fill=(90, 90, 90))


def tb_new():  # a blank page with a spark
    im, d = tile()
    page(d)
    d.line([(13, 9), (13, 15)], fill=(250, 210, 40))
    d.line([(10, 12), (15, 12)], fill=(250, 210, 40))
    return im


def tb_open():  # an open folder
    im, d = tile()
    d.polygon([(0, 3), (5, 3), (6, 5), (13, 5), (13, 14), (0, 14)], fill=(240, 200, 90), outline=(150, 110, 20))
    d.polygon([(3, 8), (15, 8), (13, 14), (0, 14)], fill=(250, 225, 130), outline=(150, 110, 20))
    return im


def tb_save():  # a diskette
    im, d = tile()
    d.rectangle([1, 1, 14, 14], fill=(60, 90, 160), outline=(30, 50, 100))
    d.rectangle([4, 1, 11, 6], fill=(240, 240, 240))
    d.rectangle([3, 9, 12, 14], fill=(200, 200, 210))
    return im


def tb_cut():  # scissors
    im, d = tile()
    d.line([(4, 1), (10, 10)], fill=(90, 90, 100), width=2)
    d.line([(11, 1), (5, 10)], fill=(90, 90, 100), width=2)
    d.ellipse([1, 10, 6, 15], outline=(200, 40, 40), width=2)
    d.ellipse([9, 10, 14, 15], outline=(200, 40, 40), width=2)
    return im


def tb_copy():  # two pages
    im, d = tile()
    d.rectangle([0, 0, 9, 11], fill=(255, 255, 255), outline=(90, 90, 90))
    d.rectangle([5, 4, 15, 15], fill=(255, 255, 255), outline=(40, 60, 110))
    for y in (7, 10, 13):
        d.line([(7, y), (13, y)], fill=(90, 120, 190))
    return im


def tb_paste():  # a clipboard with a page
    im, d = tile()
    d.rectangle([1, 2, 12, 15], fill=(200, 150, 80), outline=(120, 80, 30))
    d.rectangle([4, 0, 9, 3], fill=(160, 160, 170), outline=(80, 80, 90))
    d.rectangle([6, 6, 15, 15], fill=(255, 255, 255), outline=(90, 90, 90))
    return im


def turn(d, back):  # a curved arrow, to the left (undo) or to the right (redo)
    colour = (40, 110, 200)
    if back:
        d.arc([3, 3, 14, 14], 180, 360 + 90, fill=colour, width=2)
        d.polygon([(0, 8), (6, 8), (3, 4)], fill=colour)
    else:
        d.arc([1, 3, 12, 14], 180 + 90, 360 + 180, fill=colour, width=2)
        d.polygon([(15, 8), (9, 8), (12, 4)], fill=colour)


def tb_undo():
    im, d = tile()
    turn(d, True)
    return im


def tb_redo():
    im, d = tile()
    turn(d, False)
    return im


def tb_run():  # the green start arrow of the program's icon
    im, d = tile()
    d.polygon([(3, 1), (3, 15), (14, 8)], fill=(40, 190, 70), outline=(10, 110, 40))
    return im


def tb_run_from_here():  # the arrow after a step's row
    im, d = tile()
    d.rectangle([0, 6, 5, 10], fill=(70, 110, 170))
    d.polygon([(7, 2), (7, 14), (15, 8)], fill=(40, 190, 70), outline=(10, 110, 40))
    return im


def tb_stop():  # a red square
    im, d = tile()
    d.rectangle([2, 2, 13, 13], fill=(210, 40, 40), outline=(120, 10, 10))
    return im


def tb_check():  # a page with a tick
    im, d = tile()
    page(d)
    d.line([(3, 9), (6, 12), (12, 5)], fill=(30, 160, 60), width=2)
    return im


def tb_record_steps():  # rows of steps being written, with the red dot of recording
    im, d = tile()
    page(d)
    for y in (3, 6, 9):
        d.line([(4, y), (11, y)], fill=(70, 110, 170))
    d.ellipse([8, 8, 15, 15], fill=(220, 30, 30), outline=(150, 10, 10))
    return im


TOOLBAR = [tb_new, tb_open, tb_save, tb_cut, tb_copy, tb_paste, tb_undo, tb_redo, tb_run, tb_run_from_here,
           tb_stop, tb_check, None,  # Options takes the gear of the System category
           tb_record_steps]


TILES = [run_program, windows, keyboard, menu, mouse, wait, prompt, recordings, files, internet, database,
         flow, if_, system, functions, external, comment, loop, label, star]


def app_icon(size):
    """A blue rounded square with a white Z and a green start arrow."""
    big = 256
    im = Image.new("RGBA", (big, big), (0, 0, 0, 0))
    d = ImageDraw.Draw(im)
    d.rounded_rectangle([8, 8, big - 8, big - 8], radius=48, fill=(30, 90, 180, 255), outline=(10, 50, 120, 255),
                        width=8)
    d.polygon([(56, 56), (196, 56), (196, 86), (100, 170), (196, 170), (196, 200), (56, 200), (56, 170),
               (152, 86), (56, 86)], fill=(255, 255, 255, 255))
    d.polygon([(150, 150), (150, 236), (226, 193)], fill=(40, 190, 70, 255), outline=(10, 110, 40, 255))
    return im.resize((size, size), Image.LANCZOS)


def ico(images):
    """An .ico file of 32-bit DIB entries (alpha, and an all-zero AND mask)."""
    entries, data = [], b""
    offset = 6 + 16 * len(images)
    for im in images:
        w, h = im.size
        header = struct.pack("<IiiHHIIiiII", 40, w, 2 * h, 1, 32, 0, 0, 0, 0, 0, 0)
        pixels = b"".join(bytes((b, g, r, a)) for y in range(h - 1, -1, -1)
                          for (r, g, b, a) in (im.getpixel((x, y)) for x in range(w)))
        mask = b"\0" * (((w + 31) // 32) * 4 * h)
        blob = header + pixels + mask
        entries.append(struct.pack("<BBBBHHII", w % 256, h % 256, 0, 0, 1, 32, len(blob), offset))
        offset += len(blob)
        data += blob
    return struct.pack("<HHH", 0, 1, len(images)) + b"".join(entries) + data


def main():
    out = os.path.join(sys.argv[1], "src", "resources")
    strip = Image.new("RGB", (16 * len(TILES), 16), KEY)
    for i, draw in enumerate(TILES):
        strip.paste(draw(), (16 * i, 0))
    strip.save(os.path.join(out, "actions.bmp"))
    bar = Image.new("RGB", (16 * len(TOOLBAR), 16), KEY)
    for i, draw in enumerate(TOOLBAR):
        bar.paste((draw or system)(), (16 * i, 0))
    bar.save(os.path.join(out, "toolbar.bmp"))
    with open(os.path.join(out, "zantorunner.ico"), "wb") as f:
        f.write(ico([app_icon(s) for s in (16, 32, 48)]))
    # A larger view of the strip, for a person to look at.
    strip.resize((16 * len(TILES) * 4, 64), Image.NEAREST).save(os.path.join(sys.argv[2] if len(sys.argv) > 2 else
                                                                           "/tmp", "actions-x4.png"))
    return 0


if __name__ == "__main__":
    sys.exit(main())
