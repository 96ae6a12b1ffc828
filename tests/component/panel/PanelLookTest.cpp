#include "component/panel/Backdrop.h"
#include "component/panel/PanelFixture.h"

#include <cmath>
#include <cstdlib>
#include <utility>

namespace kelo::test {

namespace {

/// The panel over a white screen, so that both its shadow and a black corner would show.
class PanelLookTest : public PanelFixture {
protected:
    void SetUp() override {
        until("the screen is white", [this] {
            backdrop.redraw();
            return colorAt(5, 5) == Backdrop::color;
        });
        show();
        until("the panel fills its frame", [this] { return fillsItsFrame(); });
        awaitRest();
    }
    void TearDown() override { picture("look"); }

    /// False while a manager's movement still makes the window larger: on a busy machine that
    /// stands still for longer than two frames.
    bool fillsItsFrame() const {
        const Box at = box();
        const int line = scale();
        return contentAt(at.x + line, at.y + at.height / 2) &&
               contentAt(at.x + at.width - 1 - line, at.y + at.height / 2) &&
               contentAt(at.x + at.width / 2, at.y + line) &&
               contentAt(at.x + at.width / 2, at.y + at.height - 1 - line);
    }

    /// Whether the outermost pixels are neither the panel's content nor what lies behind it.
    bool hasHairline() const {
        const Box at = box();
        for (const auto& [x, y] : {std::pair(at.x, at.y + at.height / 2),
                                   std::pair(at.x + at.width - 1, at.y + at.height / 2),
                                   std::pair(at.x + at.width / 2, at.y),
                                   std::pair(at.x + at.width / 2, at.y + at.height - 1)})
            if (contentAt(x, y) || colorAt(x, y) == Backdrop::color)
                return false;
        return true;
    }

    /// A manager that blends may draw the panel first and its shadow, or the last of a movement, a
    /// frame later: waits until two looks that are two frames apart find the same.
    void awaitRest() {
        using Clock = std::chrono::steady_clock;
        constexpr std::chrono::milliseconds twoFrames{40};
        screen::Picture last(connection);
        auto lastLook = Clock::now();
        until("the screen is at rest", [&] {
            if (Clock::now() - lastLook < twoFrames)
                return false;
            screen::Picture now(connection);
            const bool same = now == last;
            last = std::move(now);
            lastLook = Clock::now();
            return same;
        });
    }

    int scale() const { return box().width / 640; }
    static int brightness(unsigned color) {
        return int((color >> 16) + (color >> 8 & 0xff) + (color & 0xff)) / 3;
    }
    bool isComposited() const { return manager() == "xfwm4-composited" || manager() == "mutter"; }

    Backdrop backdrop;
};

TEST_F(PanelLookTest, CornersAreRoundAndNeverBlack) {
    const Box at = box();
    const int darkestBehind = isComposited() ? 100 : 255;
    for (const int x : {at.x + scale(), at.x + at.width - 1 - scale()})
        for (const int y : {at.y + scale(), at.y + at.height - 1 - scale()}) {
            const unsigned corner = colorAt(x, y);
            EXPECT_NE(corner, FakeContent::color) << x << " " << y;
            EXPECT_GE(brightness(corner), darkestBehind) << x << " " << y;
        }
    // Just inside of the arc, and in the middle of each edge.
    const int inside = 7 * scale();
    EXPECT_TRUE(contentAt(at.x + inside, at.y + inside));
    EXPECT_TRUE(contentAt(at.x + at.width - 1 - inside, at.y + at.height - 1 - inside));
    EXPECT_TRUE(fillsItsFrame());
}

TEST_F(PanelLookTest, AHairlineSetsItApartFromWhatIsOfItsOwnColor) {
    // The last frame of a manager's movement may come later than two looks that are the same.
    until("the hairline is there", [this] { return hasHairline(); });
}

TEST_F(PanelLookTest, ItsFrameIsAsLargeAsItWasAskedFor) {
    const Box at = box();
    EXPECT_EQ(at.width, 640 * scale());
    EXPECT_EQ(at.height, 620 * scale());
    EXPECT_EQ(at.x, 320 * scale());
    EXPECT_EQ(at.y, connection.height() - (120 + 620) * scale());
    EXPECT_FALSE(contentAt(at.x - 1, at.y + at.height / 2));
    EXPECT_FALSE(contentAt(at.x + at.width, at.y + at.height / 2));
    EXPECT_FALSE(contentAt(at.x + at.width / 2, at.y - 1));
    EXPECT_FALSE(contentAt(at.x + at.width / 2, at.y + at.height));
}

TEST_F(PanelLookTest, HasASoftShadowOnlyWhereTheScreenCanBlend) {
    const Box at = box();
    const auto below = [&](int distance) {
        return brightness(colorAt(at.x + at.width / 2, at.y + at.height + distance * scale()));
    };
    if (!isComposited()) {
        for (const int distance : {0, 1, 5, 20})
            EXPECT_EQ(below(distance), 255) << distance;
        return;
    }
    // The manager's first frame may show the panel alone.
    until("the shadow is there", [&] {
        return below(1) < 230 && below(1) < below(10) && below(10) < below(25) && below(34) == 255;
    });
}

TEST_F(PanelLookTest, EdgesOfTheCornersAreSmoothWhereTheScreenCanBlend) {
    if (!isComposited())
        GTEST_SKIP() << "a cut-out window has no half-covered pixels";
    const Box at = box();
    // Along the corner's diagonal: from what lies behind, over a mixture, to the contents.
    bool mixed = false;
    for (int step = 0; step < 10 * scale(); ++step) {
        const unsigned color = colorAt(at.x + step, at.y + step);
        const int red = int(color >> 16);
        mixed = mixed || (red > 0x33 + 20 && red < 200 && color != FakeContent::color);
    }
    EXPECT_TRUE(mixed);
}

TEST_F(PanelLookTest, MovesWhileShownAndStaysWhereItWasPut) {
    panel->setFrameOrigin({200.5, 90});
    const int left = int(std::lround(200.5 * scale()));
    const int top = connection.height() - (90 + 620) * scale();
    until("it moves", [&] { return contentAt(left + 2 * scale(), top + 300 * scale()); });
    awaitRest();
    EXPECT_FALSE(contentAt(left - 1, top + 300 * scale()));
    EXPECT_EQ(panel->frame(), (platform::Rectangle{200.5, 90, 640, 620}));
    hide();
    panel->setFrameOrigin({300, 100});
    show();
    EXPECT_EQ(panel->frame(), (platform::Rectangle{300, 100, 640, 620}));
    until("it is drawn there",
          [&] { return contentAt(305 * scale(), connection.height() - 300 * scale()); });
}

} // namespace

} // namespace kelo::test
