"""What is tried on each desktop, in this order. A check returns what a reader of the table should know, or nothing;
it raises NotHere where the desktop lacks the thing, and Denied where the desktop does not let Kelo do it."""

import re

from desktops.base import NotHere
from drive import keys
from drive.waiting import Missed, await_or_not, await_that
from drive.widget import beside, hold_to_its_place, widget_area


class Denied(Exception):
    """The desktop does not allow it, as was seen here. The text is one sentence."""


ALL = []


def check(title):
    def keep(function):
        ALL.append((function.__name__.replace("_", "-"), title, function))
        return function

    return keep


@check("Main window")
def main_window(road):
    road.open_kelo()
    road.user.await_login_page()
    if road.desktop.await_shortcut_dialog():
        road.picture("shortcut-dialog")
        road.desktop.answer_shortcut_dialog()
    road.main_window()
    road.picture("login-page")


@check("Sign-in with a passkey")
def sign_in(road):
    road.user.sign_in_with_password()
    road.user.register_passkey()
    road.picture("registered")
    road.user.close_alert()
    road.kelo.click("button", "Sign out", "page")
    road.user.await_login_page()
    road.kelo.click("button", "Sign in with passkey")
    road.kelo.tree.await_one("button", "Continue")
    road.picture("sheet")
    road.user.agree_on_sheet()
    road.user.await_signed_in()
    road.picture("signed-in")


def choose_in_tray(road, entry):
    road.desktop.click(*await_that("the tray shows Kelo", road.desktop.tray_icon), button="right")
    place = await_that(
        f"the tray's menu shows {entry}",
        lambda: next(((x, y) for text, x, y in road.desktop.tray_menu() if text.replace("_", "") == entry), None),
    )
    return place


@check("Tray")
def tray(road):
    road.desktop.click(*choose_in_tray(road, "Settings…"))
    road.kelo.tree.await_one("label", "Backend")
    road.picture("tray-settings")
    road.desktop.press("Escape")
    other = road.other()
    place = choose_in_tray(road, "Open Kelo")
    road.picture("tray-menu")
    road.desktop.click(*place)
    came = await_or_not(road.is_in_front, 15)
    other.end()
    road.desktop.click(*choose_in_tray(road, "Check for Updates…"))
    road.kelo.tree.await_one("button", "OK")
    road.picture("tray-updates")
    road.user.close_alert()
    if not came and not road.desktop.hands_on_tokens:
        raise Denied("each entry works, but the tray hands no activation token on: an open window stays behind others")
    if not came:
        raise Missed("Open Kelo left the window behind another one.")


@check("Second start")
def second_start(road):
    other = road.other([road.build / "kelo"])
    road.desktop.press("F5")
    try:
        await_that("the window is in front", road.is_in_front, 15)
    finally:
        road.picture("second-start")
        other.end()


@check("Notifications of a page")
def notifications(road):
    road.kelo.run("https://localhost:8443/gallery/notifications.html")
    road.kelo.click("button", "Ask for permission", "page")
    road.kelo.click("button", "Allow")
    road.kelo.tree.await_gone("button", "Allow")
    road.kelo.click("button", "Notify in ten seconds*", "page")
    other = road.other()
    try:
        _title, _body, x, y = await_that(
            "the page's notification is shown",
            lambda: next((one for one in road.desktop.notifications() if "message from the gallery" in one[0]), None),
        )
        road.picture("notification")
        road.desktop.click(x, y)
        try:
            await_that("a click on it brings the window to the front", road.is_in_front, 15)
        except Missed:
            if road.desktop.sends_tokens:
                raise
            raise Denied("a click comes without a token, so that an open window stays behind others") from None
    finally:
        other.end()
        road.desktop.press("Alt_L", "Home")
        road.user.await_signed_in()


@check("No tray")
def no_tray(road):
    road.desktop.without_tray()
    road.desktop.press("Control_L", "w")
    await_that("the window is closed", lambda: not road.kelo.windows())
    title, _body, x, y = await_that(
        "Kelo says that it keeps running",
        lambda: next((one for one in road.desktop.notifications() if "keeps running" in one[0]), None),
    )
    road.picture("no-tray")
    road.desktop.click(x, y)
    await_that("a click on the notification opens the window", road.is_in_front)
    road.picture("notification-clicked")


def said_of_hotkey(road):
    status, said = road.kelo.run("--hotkey-status")
    if status != 0:
        raise Missed(f"--hotkey-status ended with {status}: {said}")
    return said


def sees_keys(said):
    """Whether a press of the keys is seen while another program has the keyboard."""
    return re.search(r"^(X11|Kernel|evdev|Keyboard devices)[^:]*: available", said, re.MULTILINE) is not None


@check("Hotkey")
def hotkey(road):
    """What --hotkey-status says is what a press does, while another program has the keyboard."""
    said = said_of_hotkey(road)
    (road.pictures / "hotkey-status.txt").write_text(said, encoding="utf-8")
    if road.desktop.panel_status not in said:
        raise Missed(f"--hotkey-status does not say that {road.desktop.panel_status}: {said}")
    other = road.other()
    try:
        before = road.look()
        road.desktop.press("Control_L", "Alt_L")
        if not await_or_not(road.widget, 10) and not sees_keys(said):
            has_shortcut = "portal: available" in said
            instead = "the desktop's shortcut does it" if has_shortcut else "`kelo --widget` can be bound to a key"
            raise Denied(f"no program sees keys of another one; {instead}")
        road.await_widget(before)
        road.picture("hotkey")
        road.desktop.press("Control_L", "Alt_L")
        await_that("the widget is gone", lambda: not road.widget())
    finally:
        other.end()


def turn_widget(road):
    status, said = road.kelo.run("--widget")
    if status != 0:
        raise Missed(f"kelo --widget ended with {status}: {said}")


@check("Widget over a window")
def widget_over_window(road):
    other = road.other()
    try:
        before = road.look()
        turn_widget(road)
        road.await_widget(before)
        road.picture("widget")
        took_keyboard = await_or_not(lambda: not other.has_keyboard())
        turn_widget(road)
        await_that("the widget is gone", lambda: not road.widget())
        if not took_keyboard:
            raise Denied("the keyboard stays where it is until the widget is clicked")
        await_that("the keyboard is back", other.has_keyboard)
    finally:
        other.end()


@check("Widget over full screen")
def widget_over_full_screen(road):
    other = road.other()
    try:
        road.desktop.press("F11")
        await_that("a window fills the screen", lambda: any(one.is_full_screen for one in road.desktop.windows()))
        before = road.picture("full-screen")
        turn_widget(road)
        road.await_widget(before)
        road.picture("widget-over-full-screen")
        turn_widget(road)
        await_that("the widget is gone", lambda: not road.widget())
    finally:
        other.end()


def hold_and_escape(road):
    chord = [keys.code("Control_L"), keys.code("Alt_L")]
    for code in chord:
        road.desktop.turn_key(code, True)
    try:
        await_that("the widget comes while the keys are held", road.widget)
    finally:
        for code in reversed(chord):
            road.desktop.turn_key(code, False)
    if await_or_not(lambda: not road.widget(), 1):
        raise Missed("The widget goes when the keys are released.")
    road.desktop.press("Escape")
    await_that("Escape closes the widget", lambda: not road.widget())


def click_beside(road, other):
    turn_widget(road)
    await_that("the widget is there", road.widget)
    window = next(one for one in road.desktop.windows() if one.title == other.TITLE)
    road.desktop.click(*beside(widget_area(road.kelo), window))
    await_that("a click on a window gives it the keyboard", other.has_keyboard)
    if not road.widget():
        raise Missed("A click beside the widget closes it.")
    turn_widget(road)
    await_that("the widget is gone", lambda: not road.widget())


@check("Widget beside the desktop's panel")
def widget_beside_panel(road):
    other = road.other()
    try:
        for edge in ("top", "left", "bottom"):
            road.desktop.move_panel(edge)
            before = road.look()
            turn_widget(road)
            road.await_widget(before)
            hold_to_its_place(road.kelo, edge, road.picture(f"widget-panel-{edge}"))
            road.desktop.press("Escape")
            await_that("Escape closes the widget", lambda: not road.widget())
            await_that("the keyboard is back", other.has_keyboard)
        if sees_keys(said_of_hotkey(road)):
            hold_and_escape(road)
            await_that("the keyboard is back", other.has_keyboard)
        click_beside(road, other)
    finally:
        other.end()


@check("Global shortcut of the desktop")
def global_shortcut(road):
    note = road.desktop.answer_shortcut_dialog()
    other = road.other()
    try:
        before = road.look()
        road.desktop.press("Control_L", "Alt_L", "space")
        road.await_widget(before)
        road.picture("shortcut")
        road.desktop.press("Control_L", "Alt_L", "space")
        await_that("the widget is gone", lambda: not road.widget())
    finally:
        other.end()
    return note


@check("Dark")
def dark(road):
    def brightness():
        window = road.main_window()
        return road.look().brightness((window.x, window.y, window.width, window.height))

    road.desktop.set_dark(True)
    try:
        await_that("the window is dark", lambda: brightness() < 90)
        road.picture("dark")
    finally:
        road.desktop.set_dark(False)
    await_that("the window is bright", lambda: brightness() > 150)


def _is_green(red, green, blue):
    return green > red + 40 and green > blue + 40


@check("Accent colour")
def accent(road):
    def share():
        return road.look().share(road.kelo.area("button", "OK"), _is_green)

    road.desktop.set_accent("green")
    try:
        road.kelo.run("--check-for-updates")  # a window with a button in that colour
        road.kelo.tree.await_one("button", "OK")
        await_that("the button is green", lambda: share() > 0.3)
        road.picture("accent")
    finally:
        road.desktop.set_accent("blue")
    await_that("the button is not green any more", lambda: share() == 0)
    road.user.close_alert()


def _is_dark(red, green, blue):
    return red + green + blue < 300


@check("Scale 125 %, 200 %")
def scale(road):
    def has_page():
        heading = road.kelo.area("heading", "Welcome, Ada", "page")
        return road.look().share(heading, _is_dark) > 0.01

    def width():
        """Of an entry of the main window's menu, in pixels."""
        return road.kelo.area("menu", "Account")[2] * road.look().scale

    before = width()
    try:
        for factor in (1.25, 2):
            road.desktop.set_scale(factor)
            # Not by the whole factor where only texts grow.
            await_that("the window is drawn larger", lambda wanted=before * (1 + factor) / 2: width() >= wanted)
            await_that("the page is drawn", has_page)
            road.user.open_menu("Account")
            road.picture(f"scale-{round(factor * 100)}")
            road.user.close_menu()
    finally:
        road.desktop.set_scale(1)
    await_that("the window is drawn as before", lambda: width() == before)
    await_that("the page is drawn as before", has_page)


@check("Locked screen")
def lock(road):
    road.desktop.lock()
    road.picture("locked")
    road.kelo.run("--widget")
    came = await_or_not(road.widget, 2)
    is_seen = road.sees_widget(road.picture("locked-and-asked"))
    if not came and road.desktop.asks_for_password:
        road.desktop.press("Control_L", "Alt_L")
        came = await_or_not(road.widget, 2)
        is_seen = is_seen or road.sees_widget(road.picture("locked-and-tapped"))
    road.desktop.unlock()
    if is_seen:
        raise Missed("The widget can be seen over the lock screen.")
    if came and not road.desktop.tells_of_lock:
        turn_widget(road)
        raise Denied("the lock screen covers the widget, but tells nobody that it is there")
    if came:
        raise Missed("The widget came over the lock screen.")
    if await_or_not(road.widget, 2):
        raise Missed("The widget came when the screen was unlocked.")
    return "" if road.desktop.asks_for_password else "any key opens it for root, so that no tap on it was tried"


@check("Quit")
def quit_kelo(road):
    try:
        road.desktop.click(*choose_in_tray(road, "Quit Kelo"))
    except (NotHere, Missed):
        road.kelo.run("--quit")
    await_that("Kelo has ended", lambda: not road.kelo.process.is_running())
