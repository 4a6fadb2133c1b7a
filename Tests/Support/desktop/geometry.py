from typing import NamedTuple


class Rectangle(NamedTuple):
    """In dots of the screen."""

    x: int
    y: int
    width: int
    height: int

    @property
    def right(self):
        return self.x + self.width

    @property
    def bottom(self):
        return self.y + self.height

    @property
    def centre(self):
        return self.x + self.width // 2, self.y + self.height // 2

    def contains(self, other):
        return (self.x <= other.x and other.right <= self.right
                and self.y <= other.y and other.bottom <= self.bottom)

    def shrunk(self, margin):
        return Rectangle(self.x + margin, self.y + margin, self.width - 2 * margin, self.height - 2 * margin)
