#include "component/gtk/OverlayFixture.h"

#include <gtest/gtest.h>
#include <gtkmm/icontheme.h>
#include <gtkmm/image.h>
#include <gtkmm/label.h>
#include <gtkmm/settings.h>
#include <gtkmm/stylecontext.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace kelo::tests {
namespace {

using Channels = std::array<double, 3>;

Channels channelsOf(const Gdk::RGBA& color) {
    return {color.get_red(), color.get_green(), color.get_blue()};
}

Channels channelsOf(Color color) {
    return {color.red / 255.0, color.green / 255.0, color.blue / 255.0};
}

double distance(const Channels& one, const Channels& other) {
    double sum = 0;
    for (std::size_t at = 0; at < one.size(); ++at)
        sum += std::abs(one[at] - other[at]);
    return sum;
}

double luminance(const Channels& color) {
    const auto linear = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color[0]) + 0.7152 * linear(color[1]) + 0.0722 * linear(color[2]);
}

double contrast(double one, double other) {
    return (std::max(one, other) + 0.05) / (std::min(one, other) + 0.05);
}

/// How much redder than anything else the color is, from 0 to 255.
int redness(Color color) {
    return std::max(0, color.red - std::max(color.green, color.blue));
}

class OverlayLook : public OverlayFixture {
protected:
    ~OverlayLook() override {
        // The settings belong to the display, so they are reset for the following tests.
        Gtk::Settings::get_default()->reset_property("gtk-application-prefer-dark-theme");
    }
    void inBothSchemes(const std::function<void(const char* scheme)>& look) {
        for (const bool dark : {false, true}) {
            Gtk::Settings::get_default()->property_gtk_application_prefer_dark_theme() = dark;
            draw();
            look(dark ? "dark" : "light");
        }
    }
    Channels themeColor(const char* name) {
        Gdk::RGBA color;
        EXPECT_TRUE(panel()->get_style_context()->lookup_color(name, color)) << name;
        return channelsOf(color);
    }
    std::vector<Color> colorsOf(Gtk::Widget& widget) {
        const auto box = program.boxOf(widget);
        return program.screen.colorsIn(box.x, box.y, box.width, box.height);
    }
    /// What the screen shows of the panel itself, in its padding.
    Channels shownGround() {
        const auto box = program.boxOf(*panel());
        return channelsOf(program.screen.colorAt(box.x + 8, box.y + box.height / 2));
    }
    /// The opacity of the panel, from 0 to 1.
    double shownOpacity() {
        const Channels ground = themeColor("theme_bg_color");
        const Channels page = channelsOf(pageColor);
        const Channels shown = shownGround();
        // The channel with the greatest difference gives the most exact result.
        std::size_t best = 0;
        for (std::size_t at = 1; at < page.size(); ++at)
            if (std::abs(page[at] - ground[at]) > std::abs(page[best] - ground[best]))
                best = at;
        return (page[best] - shown[best]) / (page[best] - ground[best]);
    }
    /// What the screen shows of the button beside its label.
    Channels shownButton() {
        const auto box = program.boxOf(*signIn());
        return channelsOf(program.screen.colorAt(box.x + 8, box.y + box.height / 2));
    }
    Gtk::Label* errorText() {
        for (auto* label : visibleIn<Gtk::Label>(*panel()))
            if (label->get_text().raw() == *program.app.state->error.get())
                return label;
        return nullptr;
    }
    Gtk::Label* buttonLabel() { return visibleIn<Gtk::Label>(*signIn()).at(0); }
    Gtk::Image* buttonIcon() {
        const auto images = visibleIn<Gtk::Image>(*signIn());
        return images.empty() ? nullptr : images.front();
    }
};

Pango::FontDescription drawnFont(Gtk::Label& label) {
    return label.get_layout()->get_context()->get_font_description();
}

TEST_F(OverlayLook, PageShowsThroughThePanelALittle) {
    whileOnLogin([&] {
        inBothSchemes([&](const char* scheme) {
            const double opacity = shownOpacity();
            EXPECT_GT(opacity, 0.88) << scheme;
            EXPECT_LT(opacity, 0.97) << scheme;
            const Channels ground = themeColor("theme_bg_color");
            const Channels page = channelsOf(pageColor);
            Channels expected{};
            for (std::size_t at = 0; at < expected.size(); ++at)
                expected[at] = opacity * ground[at] + (1 - opacity) * page[at];
            EXPECT_LT(distance(shownGround(), expected), 0.03) << scheme;
        });
    });
}

TEST_F(OverlayLook, HairlineSetsItOffFromAPageOfItsOwnColor) {
    whileOnLogin([&] {
        inBothSchemes([&](const char* scheme) {
            const auto box = program.boxOf(*panel());
            const int middle = box.y + box.height / 2;
            const auto edge = channelsOf(program.screen.colorAt(box.x, middle));
            const auto inside = channelsOf(program.screen.colorAt(box.x + 1, middle));
            EXPECT_GT(distance(edge, inside), 0.25) << scheme;
            EXPECT_LT(distance(inside, shownGround()), 0.01) << scheme;
        });
    });
}

TEST_F(OverlayLook, SoftShadowSurroundsIt) {
    whileOnLogin([&] {
        inBothSchemes([&](const char* scheme) {
            const auto box = program.boxOf(*panel());
            const int middle = box.x + box.width / 2;
            const int below = box.y + box.height;
            const int near = program.screen.colorAt(middle, below + 1).red;
            const int farther = program.screen.colorAt(middle, below + 5).red;
            EXPECT_LT(near, farther) << scheme;
            EXPECT_LT(farther, pageColor.red) << scheme;
            EXPECT_GT(near, pageColor.red * 3 / 4) << scheme;
        });
    });
}

TEST_F(OverlayLook, ErrorIsReadableInBothSchemesOverAnyPage) {
    whileOnLogin([&] {
        program.app.state->error = "Cancelled.";
        draw();
        inBothSchemes([&](const char* scheme) {
            const auto red = channelsOf(errorText()->get_style_context()->get_color());
            const Channels ground = themeColor("theme_bg_color");
            const double opacity = shownOpacity();
            for (const double page : {0.0, 1.0}) {
                Channels behind{};
                for (std::size_t at = 0; at < behind.size(); ++at)
                    behind[at] = opacity * ground[at] + (1 - opacity) * page;
                EXPECT_GE(contrast(luminance(red), luminance(behind)), 4.5)
                    << scheme << " scheme over a page of " << page;
            }
        });
    });
}

TEST_F(OverlayLook, ErrorWithAWordLongerThanALineGetsNoHyphenOfOurs) {
    whileOnLogin([&] {
        program.app.state->error = std::string(120, 'W');
        draw();
        EXPECT_TRUE(isBrokenWithoutHyphen(*errorText()));
    });
}

TEST_F(OverlayLook, ErrorIsRedOnTheScreenAndOtherTextIsNot) {
    whileOnLogin([&] {
        program.app.state->error = "Cancelled.";
        draw();
        const auto reddest = [&] {
            int found = 0;
            for (const Color color : colorsOf(*errorText()))
                found = std::max(found, redness(color));
            return found;
        };
        inBothSchemes([&](const char* scheme) {
            drawAs(nullptr);
            EXPECT_GT(reddest(), 80) << scheme;
            drawAs([](auto& overlay) { overlay.text->color = platform::TextColor::primary; });
            EXPECT_LT(reddest(), 40) << scheme;
        });
    });
}

TEST_F(OverlayLook, CaptionIsSmallerThanOtherText) {
    whileOnLogin([&] {
        program.app.state->error = "Cancelled.";
        draw();
        const int caption = drawnFont(*errorText()).get_size();
        const int captionHeight = errorText()->get_height();
        drawAs([](auto& overlay) { overlay.text->font = platform::TextFont::body; });
        const int body = drawnFont(*errorText()).get_size();
        EXPECT_GT(caption, 0.75 * body);
        EXPECT_LT(caption, 0.9 * body);
        EXPECT_LT(captionHeight, errorText()->get_height());
    });
}

TEST_F(OverlayLook, ProminentButtonIsFilledWithTheAccentColor) {
    whileOnLogin([&] {
        inBothSchemes([&](const char* scheme) {
            drawAs(nullptr);
            const Channels accent = themeColor("theme_selected_bg_color");
            EXPECT_LT(distance(shownButton(), accent), 0.15) << scheme;
            drawAs([](auto& overlay) { overlay.button.style = platform::ButtonStyle::regular; });
            EXPECT_GT(distance(shownButton(), accent), 0.4) << scheme;
        });
    });
}

TEST_F(OverlayLook, LargeButtonIsLargerAndItsLabelBolder) {
    whileOnLogin([&] {
        const int large = program.boxOf(*signIn()).height;
        const auto weight = drawnFont(*buttonLabel()).get_weight();
        drawAs([](auto& overlay) { overlay.button.controlSize = platform::ControlSize::regular; });
        EXPECT_GE(large, program.boxOf(*signIn()).height + 6);
        EXPECT_GE(large, 40);
        EXPECT_GT(weight, drawnFont(*buttonLabel()).get_weight());
    });
}

TEST_F(OverlayLook, ButtonHasItsIconBeforeTheLabel) {
    whileOnLogin([&] {
        auto* icon = buttonIcon();
        ASSERT_NE(icon, nullptr);
        EXPECT_EQ(icon->get_icon_name(), "kelo-person-badge-key-symbolic");
        EXPECT_TRUE(Gtk::IconTheme::get_for_display(main().get_display())
                        ->has_icon("kelo-person-badge-key-symbolic"));
        const auto place = program.boxOf(*icon);
        EXPECT_EQ(place.width, 16);
        EXPECT_EQ(program.boxOf(*buttonLabel()).x - place.x - place.width, 8);
        // A symbol: in the label's color, on a part of its place that is neither small nor all.
        const auto ink = channelsOf(buttonLabel()->get_style_context()->get_color());
        const auto colors = colorsOf(*icon);
        const auto drawn = std::count_if(colors.begin(), colors.end(), [&](Color color) {
            return distance(channelsOf(color), ink) < 0.3;
        });
        EXPECT_GT(drawn, 20);
        EXPECT_LT(drawn, static_cast<long>(colors.size()) - 60);
    });
}

TEST_F(OverlayLook, ButtonWithoutAnImageHasNoneAndAnUnknownOneIsSeenToBeMissing) {
    whileOnLogin([&] {
        drawAs([](auto& overlay) { overlay.button.systemImage.clear(); });
        EXPECT_EQ(buttonIcon(), nullptr);
        drawAs([](auto& overlay) { overlay.button.systemImage = "sparkles"; });
        ASSERT_NE(buttonIcon(), nullptr);
        EXPECT_EQ(buttonIcon()->get_icon_name(), "image-missing");
    });
}

TEST_F(OverlayLook, LengthsAreTheDescriptions) {
    whileOnLogin([&] {
        program.app.state->error = "Cancelled.";
        drawAs([](auto& overlay) {
            overlay.spacing = 20;
            overlay.padding = 40;
            overlay.cornerRadius = 0;
            overlay.bottomPadding = 60;
            overlay.button.labelMaximumWidth = 400;
        });
        const auto page = program.boxOf(program.app.page->area);
        const auto box = program.boxOf(*panel());
        const auto button = program.boxOf(*signIn());
        EXPECT_EQ(page.y + page.height - (box.y + box.height), 60);
        EXPECT_EQ(button.x - box.x, 40);
        EXPECT_EQ(program.boxOf(*errorText()).y - (button.y + button.height), 20);
        EXPECT_EQ(signIn()->get_child()->get_width(), 400);
        EXPECT_NE(program.screen.colorAt(box.x, box.y), pageColor);
        drawAs(nullptr);
        const auto usual = program.boxOf(*panel());
        const auto corner = channelsOf(program.screen.colorAt(usual.x, usual.y));
        EXPECT_LT(distance(corner, channelsOf(pageColor)), 0.2) << "round again";
        EXPECT_EQ(program.boxOf(*signIn()).x - usual.x, 16);
    });
}

TEST_F(OverlayLook, LabelTooLongForItsPlaceEndsInAnEllipsis) {
    whileOnLogin([&] {
        const std::string text =
            "Sign in with the passkey that you made on this computer last year";
        drawAs([&](auto& overlay) { overlay.button.label = text; });
        auto* label = visibleIn<Gtk::Label>(*buttonNamed(main(), text)).at(0);
        EXPECT_TRUE(label->get_layout()->is_ellipsized());
        EXPECT_EQ(buttonNamed(main(), text)->get_child()->get_width(), 320);
    });
}

} // namespace
} // namespace kelo::tests
