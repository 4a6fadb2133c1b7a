import collections
import struct
import zlib

_SIGNATURE = b"\x89PNG\r\n\x1a\n"


class Picture:
    """A part of the screen as rows of (red, green, blue)."""

    def __init__(self, rows):
        self.rows = rows

    @property
    def size(self):
        return len(self.rows[0]), len(self.rows)

    def part(self, rectangle):
        rows = self.rows[rectangle.y:rectangle.bottom]
        return Picture([row[rectangle.x:rectangle.right] for row in rows])

    def colours(self):
        """How often each colour is there."""
        return collections.Counter(pixel for row in self.rows for pixel in row)

    def background(self):
        return self.colours().most_common(1)[0][0]

    def text_contrast(self):
        """Of a text to what is behind it: at the middle of its strokes, where smoothing does not reach."""
        behind = self.background()
        return max(contrast(behind, colour) for colour in self.colours())

    def save(self, path):
        """As a PNG file."""
        width, height = self.size
        lines = b"".join(b"\0" + bytes(value for pixel in row for value in pixel) for row in self.rows)
        header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
        path.write_bytes(_SIGNATURE + _chunk(b"IHDR", header) + _chunk(b"IDAT", zlib.compress(lines, 9))
                         + _chunk(b"IEND", b""))


def read_png(path):
    """Rows of (red, green, blue, alpha) of a file with these channels, eight bits each."""
    data, place, packed = path.read_bytes(), len(_SIGNATURE), b""
    while place < len(data):
        length, name = struct.unpack_from(">I4s", data, place)
        content = data[place + 8:place + 8 + length]
        place += length + 12
        if name == b"IHDR":
            width, _height, depth, kind, *_, interlaced = struct.unpack(">IIBBBBB", content)
            assert (depth, kind, interlaced) == (8, 6, 0), f"{path} is another kind of PNG file"
        if name == b"IDAT":
            packed += content
    return _unfiltered(zlib.decompress(packed), 4 * width)


def _unfiltered(data, stride):
    rows, above = [], bytearray(stride)
    for start in range(0, len(data), stride + 1):
        line = bytearray(data[start + 1:start + 1 + stride])
        for i in range(stride):
            left, upper, corner = (line[i - 4] if i > 3 else 0), above[i], (above[i - 4] if i > 3 else 0)
            line[i] = (line[i] + _prediction(data[start], left, upper, corner)) & 0xFF
        rows.append([tuple(line[i:i + 4]) for i in range(0, stride, 4)])
        above = line
    return rows


def _prediction(kind, left, upper, corner):
    if kind == 4:
        distances = [(abs(upper - corner), left), (abs(left - corner), upper),
                     (abs(left + upper - 2 * corner), corner)]
        return min(distances, key=lambda each: each[0])[1]
    return (0, left, upper, (left + upper) // 2)[kind]


def contrast(one, other):
    """Between 1 and 21, as the Web Content Accessibility Guidelines define it; text needs 4.5."""
    darker, lighter = sorted((_luminance(one), _luminance(other)))
    return (lighter + 0.05) / (darker + 0.05)


def _luminance(colour):
    red, green, blue = (_linear(value / 255) for value in colour)
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue


def _linear(value):
    return value / 12.92 if value <= 0.04045 else ((value + 0.055) / 1.055) ** 2.4


def _chunk(name, data):
    return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))
