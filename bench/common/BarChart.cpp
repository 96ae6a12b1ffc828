#include "common/BarChart.h"

#include "common/Text.h"

#include <algorithm>
#include <utility>

namespace kelo::bench {

namespace {

constexpr double width = 900;
constexpr double barsBegin = 300;
constexpr double barsEnd = 820;
constexpr double line = 22;
constexpr double thickness = 14;

std::string drawn(const BarChart::Bar& bar, double scale, double y) {
    const double middle = y + thickness / 2;
    const double low = barsBegin + bar.lowest * scale;
    const double high = barsBegin + bar.highest * scale;
    std::string text = formatted("<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"end\">", barsBegin - 8,
                                 y + thickness - 2) +
                       xmlText(bar.name) + "</text>\n";
    text += formatted("<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" fill=\"%s\"/>\n",
                      barsBegin, y, bar.value * scale, thickness,
                      bar.isEmphasized ? "#2f5d50" : "#9aa5a0");
    text += formatted(
        "<path d=\"M%.1f %.1fH%.1fM%.1f %.1fv6M%.1f %.1fv6\" stroke=\"#1d2421\" fill=\"none\"/>\n",
        low, middle, high, low, middle - 3, high, middle - 3);
    text += formatted("<text x=\"%.1f\" y=\"%.1f\">%.4g</text>\n", high + 6, y + thickness - 2,
                      bar.value);
    return text;
}

} // namespace

void BarChart::add(std::string title, std::vector<Bar> bars) {
    groups.push_back({std::move(title), std::move(bars)});
}

std::string BarChart::svg() const {
    std::string body;
    double y = 10;
    for (const auto& group : groups) {
        y += line;
        body += formatted("<text x=\"10\" y=\"%.1f\" font-weight=\"bold\">", y) +
                xmlText(group.title) + "</text>\n";
        double highest = 0;
        for (const auto& bar : group.bars)
            highest = std::max({highest, bar.highest, bar.value});
        const double scale = highest > 0 ? (barsEnd - barsBegin) / highest : 0;
        y += line / 2;
        for (const auto& bar : group.bars) {
            body += drawn(bar, scale, y);
            y += line;
        }
    }
    return formatted("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %.0f %.0f\" "
                     "font-family=\"sans-serif\" font-size=\"13\">\n"
                     "<rect width=\"100%%\" height=\"100%%\" fill=\"#ffffff\"/>\n",
                     width, y + 10) +
           body + "</svg>\n";
}

} // namespace kelo::bench
