#include "component/panel/PanelFixture.h"

// After the test library: Xlib defines macros that break it.
#include "linux/panel/RoundedShape.h"

#include <X11/extensions/shape.h>
#include <gdk/x11/gdkx.h>

#include <cmath>

namespace kelo::test {

namespace {

using panel::RoundedShape;
using Rows = std::vector<XRectangle>;

/// The pixels of the rectangles, row by row; each pixel may be in one of them at most.
std::vector<std::string> painted(const Rows& rows, int width, int height) {
    std::vector<std::string> canvas(std::size_t(height), std::string(std::size_t(width), '.'));
    for (const XRectangle& row : rows)
        for (int y = row.y; y < row.y + row.height; ++y)
            for (int x = row.x; x < row.x + row.width; ++x) {
                char& pixel = canvas.at(std::size_t(y)).at(std::size_t(x));
                EXPECT_EQ(pixel, '.') << x << " " << y << " is there twice";
                pixel = '#';
            }
    return canvas;
}

TEST(RoundedShapeTest, WithoutARadiusIsTheRectangleWithinItsMargin) {
    const Rows rows = RoundedShape(30, 20, 0, 5).rectangles(1);
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].x, 5);
    EXPECT_EQ(rows[0].y, 5);
    EXPECT_EQ(rows[0].width, 30);
    EXPECT_EQ(rows[0].height, 20);
}

TEST(RoundedShapeTest, PixelsOfTheCornersAreThoseThatTheCircleCoversEntirely) {
    constexpr int radius = 8;
    constexpr int width = 40;
    constexpr int height = 30;
    const auto canvas =
        painted(RoundedShape(width, height, radius, 3).rectangles(1), width + 6, height + 6);
    // Every corner of a pixel that is left lies in the circle; those of one that is not do not all.
    const auto covered = [](int x, int y) {
        const double fromX = std::max({double(radius - x), double(x + 1 - (width - radius)), 0.0});
        const double fromY = std::max({double(radius - y), double(y + 1 - (height - radius)), 0.0});
        return std::hypot(fromX, fromY) <= radius || fromX == 0 || fromY == 0;
    };
    for (int y = 0; y < height + 6; ++y)
        for (int x = 0; x < width + 6; ++x) {
            const bool isInside = x >= 3 && x < width + 3 && y >= 3 && y < height + 3;
            EXPECT_EQ(canvas[std::size_t(y)][std::size_t(x)] == '#',
                      isInside && covered(x - 3, y - 3))
                << x << " " << y;
        }
}

TEST(RoundedShapeTest, RowsGoFromTheTopDown) {
    const Rows rows = RoundedShape(40, 30, 8, 3).rectangles(1);
    EXPECT_EQ(rows.size(), 17u);
    for (std::size_t at = 1; at < rows.size(); ++at)
        EXPECT_EQ(rows[at].y, rows[at - 1].y + rows[at - 1].height);
}

TEST(RoundedShapeTest, ScaleCountsForEveryMeasure) {
    const auto scaled = painted(RoundedShape(20, 15, 4, 3).rectangles(2), 52, 42);
    const auto asLarge = painted(RoundedShape(40, 30, 8, 6).rectangles(1), 52, 42);
    EXPECT_EQ(scaled, asLarge);
}

TEST(RoundedShapeTest, ARadiusLargerThanHalfTheRectangleIsTheHalf) {
    for (const auto& [width, height] : {std::pair(10, 30), std::pair(30, 10)}) {
        const Rows large = RoundedShape(width, height, 20, 0).rectangles(1);
        const Rows half = RoundedShape(width, height, 5, 0).rectangles(1);
        EXPECT_EQ(painted(large, width, height), painted(half, width, height));
        for (const XRectangle& row : large)
            EXPECT_LE(row.x + row.width, width);
    }
}

/// What X knows of the panel's window. Without a window manager, so that nobody else is at it.
class PanelShapeTest : public PanelFixture {
protected:
    void SetUp() override {
        if (hasManager())
            GTEST_SKIP() << "what is tried here does not depend on the window manager";
        show();
    }
    /// The corners are cut off the window, for want of translucency.
    bool isCut() const {
        Bool bounding = False;
        Bool clip = False;
        int ignored = 0;
        unsigned extent = 0;
        XShapeQueryExtents(connection.display(), panelWindow(), &bounding, &ignored, &ignored,
                           &extent, &extent, &clip, &ignored, &ignored, &extent, &extent);
        return bounding == True;
    }
    /// What of the window takes clicks, from its upper left corner.
    Box clickable() const {
        int count = 0;
        int order = 0;
        XRectangle* const rows =
            XShapeGetRectangles(connection.display(), panelWindow(), ShapeInput, &count, &order);
        int left = 1 << 20, top = 1 << 20, right = 0, bottom = 0;
        for (int at = 0; at < count; ++at) {
            left = std::min(left, int(rows[at].x));
            top = std::min(top, int(rows[at].y));
            right = std::max(right, rows[at].x + rows[at].width);
            bottom = std::max(bottom, rows[at].y + rows[at].height);
        }
        XFree(rows);
        return {left, top, right - left, bottom - top};
    }
    screen::Point corner() const { return windows.describe(panelWindow()).origin; }
    Box expectedAt(int scale) const {
        return {(320 - margin) * scale, connection.height() - (120 + 620 + margin) * scale,
                (640 + 2 * margin) * scale, (620 + 2 * margin) * scale};
    }
    Box windowBox() const {
        const auto window = windows.describe(panelWindow());
        return {window.origin.x, window.origin.y, window.width, window.height};
    }

    /// Around the panel, for its shadow.
    static constexpr int margin = 32;
};

/// A compositor, as far as the toolkit knows: it blends the windows of the display.
class Compositor {
public:
    Compositor() : window(XCreateSimpleWindow(own.display(), own.root(), 0, 0, 1, 1, 0, 0, 0)) {
        XSetSelectionOwner(own.display(), own.atom("_NET_WM_CM_S0"), window, CurrentTime);
        own.sync();
    }
    ~Compositor() {
        XDestroyWindow(own.display(), window);
        own.sync();
    }
    Compositor(const Compositor&) = delete;
    Compositor& operator=(const Compositor&) = delete;

private:
    screen::XConnection own;
    screen::WindowId window;
};

TEST_F(PanelShapeTest, IsCutWhileNobodyBlendsWindows) {
    EXPECT_TRUE(isCut());
    {
        const Compositor compositor;
        until("the shadow is there", [this] { return !isCut(); });
        EXPECT_EQ(clickable(), (Box{margin, margin, 640, 620}));
    }
    until("the corners are cut off again", [this] { return isCut(); });
}

TEST_F(PanelShapeTest, TellsCompositorsThatItsShadowIsItsOwn) {
    const unsigned long extent = margin;
    EXPECT_EQ(windows.numbers(panelWindow(), "_GTK_FRAME_EXTENTS"),
              (std::vector<unsigned long>{extent, extent, extent, extent}));
}

TEST_F(PanelShapeTest, FollowsTheScaleOfTheDesktop) {
    GdkDisplay* const display = gdk_display_get_default();
    EXPECT_EQ(windowBox(), expectedAt(1));
    gdk_x11_display_set_surface_scale(display, 2);
    until("the window has grown", [this] { return windowBox() == expectedAt(2); });
    EXPECT_EQ(clickable(), (Box{2 * margin, 2 * margin, 1280, 1240}));
    gdk_x11_display_set_surface_scale(display, 1);
    until("the window has shrunk", [this] { return windowBox() == expectedAt(1); });
    EXPECT_EQ(clickable(), (Box{margin, margin, 640, 620}));
}

TEST_F(PanelShapeTest, FollowsTheCornersOfItsContents) {
    const Box rounded = clickable();
    panel->setContentView({content, 18, 0, true});
    until("a single rectangle is left", [this] {
        int count = 0;
        int order = 0;
        XFree(XShapeGetRectangles(connection.display(), panelWindow(), ShapeInput, &count, &order));
        return count == 1;
    });
    EXPECT_EQ(clickable(), rounded);
}

} // namespace

} // namespace kelo::test
