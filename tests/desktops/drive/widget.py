"""The window of the voice widget, and its place on the screen."""

from drive.waiting import Missed, await_that

WIDGET = "Kelo voice assistant"  # its title
_SIZE = 640, 620  # in points
_MARGIN = 16  # points between it and the lower edge of the work area


def widget_window(kelo):
    return await_that("the widget has a window", lambda: next((w for w in kelo.windows() if w.title == WIDGET), None))


def widget_area(kelo):
    """x, y, width and height. Most compositors list no surfaces of the layer shell among the windows, but there its
    place is fixed."""
    for one in kelo.windows():
        if one.title == WIDGET:
            return one.x, one.y, one.width, one.height
    x, y, width, height = kelo.desktop.work_area()
    return x + (width - _SIZE[0]) / 2, y + height - _MARGIN - _SIZE[1], *_SIZE


def hold_to_its_place(kelo, edge):
    """In the middle of the lower edge of what the desktop's panels leave free; the main one is at this edge."""
    one = widget_window(kelo)
    x, y, width, height = kelo.desktop.work_area()
    off_centre = one.x + one.width / 2 - (x + width / 2)
    above_edge = y + height - (one.y + one.height)
    if abs(off_centre) > 1 or abs(above_edge - _MARGIN) > 1 or one.y < y:
        raise Missed(f"With the desktop's panel at the {edge}, {one} is not where it belongs in {x, y, width, height}.")


def beside(widget, window):
    """A point of the window that the widget does not cover."""
    left, right = window.x + 16, window.x + window.width - 16
    if widget.x <= left and right <= widget.x + widget.width:
        raise Missed(f"The widget covers all of {window}.")
    return left if left < widget.x else right, window.y + window.height / 2
