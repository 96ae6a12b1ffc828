"""The voice widget, and its place on the screen."""

from drive.waiting import Missed

WIDGET = "Kelo voice assistant"  # the title of its window
BUTTON = "Start microphone"  # in its page
_SIZE = 640, 620  # in points
_MARGIN = 16  # points between it and the lower edge of the work area
_NEAR = 20  # points around the button in which nothing else has its colour


def has_button_colour(*colour):
    """That of the button alone, or with the pointer on it."""
    return any(
        all(abs(one - wanted) < 5 for one, wanted in zip(colour, button))
        for button in ((0x2F, 0x5D, 0x50), (0x25, 0x4A, 0x40))
    )


def widget_area(kelo):
    """x, y, width and height. Most compositors list no surfaces of the layer shell among the windows: then it is where
    the widget belongs."""
    for one in kelo.windows():
        if one.title == WIDGET:
            return one.x, one.y, one.width, one.height
    x, y, width, height = kelo.desktop.work_area()
    return x + (width - _SIZE[0]) / 2, y + height - _MARGIN - _SIZE[1], *_SIZE


def hold_to_its_place(kelo, edge, seen):
    """In the middle of the lower edge of what the desktop's panels leave free, and there in the picture, too. The main
    panel is at this edge."""
    area = widget_area(kelo)
    x, y, width, height = kelo.desktop.work_area()
    off_centre = area[0] + area[2] / 2 - (x + width / 2)
    above_edge = y + height - (area[1] + area[3])
    if abs(off_centre) > 1 or abs(above_edge - _MARGIN) > 1 or area[1] < y:
        raise Missed(f"With the panel at the {edge}, {area} is not where it belongs in {x, y, width, height}.")
    # The tree counts from the window's edge, with the room that the shadow has there.
    window = kelo.tree.find("frame", WIDGET) or kelo.tree.await_one("window", WIDGET)
    shadow = (window.extents()[2] - area[2]) / 2
    left, top, width, height = kelo.tree.await_one("button", BUTTON, "page").extents()
    left, top = area[0] + left - shadow, area[1] + top - shadow
    around = left - _NEAR, top - _NEAR, width + 2 * _NEAR, height + 2 * _NEAR
    drawn = seen.middle(around, has_button_colour)
    if not drawn or abs(drawn[0] - left - width / 2) > 2 or abs(drawn[1] - top - height / 2) > 2:
        place = left, top, width, height
        raise Missed(f"With the panel at the {edge}, the button is drawn at {drawn}, and not in {place}.")


def beside(area, window):
    """A point of the window that the widget does not cover."""
    left, right = window.x + 16, window.x + window.width - 16
    if area[0] <= left and right <= area[0] + area[2]:
        raise Missed(f"The widget covers all of {window}.")
    return left if left < area[0] else right, window.y + window.height / 2
