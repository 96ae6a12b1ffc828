"""What a picture of the screen shows, in numbers."""

import gi

gi.require_version("GdkPixbuf", "2.0")
from gi.repository import GdkPixbuf  # noqa: E402

_BLINKING = 0.0005  # of all pixels
_STEP = 2  # of the pixels of an area, each second in each second row is looked at


class Picture:
    """`space`: width and height in points of what the picture shows. Areas are x, y, width and height in points."""

    def __init__(self, file, space):
        image = GdkPixbuf.Pixbuf.new_from_file(str(file))
        self.width, self.height = image.get_width(), image.get_height()
        self.channels, self.stride = image.get_n_channels(), image.get_rowstride()
        self.content = image.get_pixels()
        self.scale = self.width / space[0]  # pixels a point

    def _row(self, number, left=0, right=None):
        begin = number * self.stride
        return self.content[begin + left * self.channels : begin + (right or self.width) * self.channels]

    def pixels(self, area):
        """Of those in the area that are on the screen: (x, y, (red, green, blue)) each, x and y in points."""
        x, y, width, height = (round(number * self.scale) for number in area)
        left, right = max(0, x), min(self.width, x + width)
        places = [place / self.scale for place in range(left, right, _STEP)]
        step = self.channels * _STEP
        for number in range(max(0, y), min(self.height, y + height), _STEP):
            row = self._row(number, left, right) if places else b""
            colours = zip(row[0::step], row[1::step], row[2::step])
            yield from ((place, number / self.scale, colour) for place, colour in zip(places, colours))

    def brightness(self, area):
        """From 0, which is black, to 255."""
        shades = [(299 * red + 587 * green + 114 * blue) / 1000 for _x, _y, (red, green, blue) in self.pixels(area)]
        return sum(shades) / len(shades) if shades else 0

    def share(self, area, is_wanted):
        """Of the area's pixels, the part whose colour is_wanted(red, green, blue) says yes to: from 0 to 1."""
        answers = [is_wanted(*colour) for _x, _y, colour in self.pixels(area)]
        return sum(answers) / len(answers) if answers else 0

    def middle(self, area, is_wanted):
        """x and y, in points, of the middle of all pixels of the area that have such a colour, or None."""
        found = [(x, y) for x, y, colour in self.pixels(area) if is_wanted(*colour)]
        return tuple(sum(numbers) / len(found) for numbers in zip(*found)) if found else None

    def is_like(self, other):
        """But for what blinks: a cursor, the colon of a clock."""
        if (self.width, self.height) != (other.width, other.height):
            return False
        count = 0
        for number in range(self.height):
            ours, theirs = self._row(number), other._row(number)
            if ours != theirs:
                count += sum(one != another for one, another in zip(ours, theirs))
        return count <= _BLINKING * len(self.content)
