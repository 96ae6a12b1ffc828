#include "common/GrowthChart.h"

#include "common/Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>

namespace kelo::bench {

namespace {

constexpr double width = 900;
constexpr double side = 480;
constexpr double left = 60;
constexpr double top = 20;

bool isLinear(const GrowthSeries& series) {
    return growthExponent(series.points) <= linearLimit;
}

/// Decimal powers that the picture spans, in both directions.
double decades(const std::vector<GrowthSeries>& all) {
    double most = 1;
    for (const auto& series : all)
        for (const auto& [size, cost] : series.points)
            most = std::max({most, std::log10(size / series.points.front().size),
                             std::log10(cost / series.points.front().cost)});
    return most;
}

std::string grid(double span) {
    std::string text;
    for (int power = 0; power <= static_cast<int>(span); ++power) {
        const double along = side * power / span;
        text += formatted("<path d=\"M%.1f %.1fV%.1fM%.1f %.1fH%.1f\" stroke=\"#d8d9d2\"/>\n",
                          left + along, top, top + side, left, top + side - along, left + side);
        text += formatted("<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"middle\">×%.0f</text>\n",
                          left + along, top + side + 18, std::pow(10, power));
        text += formatted("<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"end\">×%.0f</text>\n",
                          left - 6, top + side - along + 4, std::pow(10, power));
    }
    return text + formatted("<path d=\"M%.1f %.1fL%.1f %.1f\" stroke=\"#1d2421\" "
                            "stroke-dasharray=\"5 4\"/>\n",
                            left, top + side, left + side, top);
}

} // namespace

std::string growthTable(const std::vector<GrowthSeries>& all) {
    std::string text;
    for (const auto& series : all) {
        text += "\n" + series.name + "\n";
        std::string sizes = formatted("  %-24s", series.sizes.c_str());
        std::string costs = formatted("  %-24s", "ms");
        for (const auto& [size, cost] : series.points) {
            sizes += formatted(" %11.0f", size);
            costs += formatted(" %11.4g", cost);
        }
        text += sizes + "\n" + costs +
                formatted("   size^%.2f: %s\n", growthExponent(series.points),
                          isLinear(series) ? "not worse than linear" : "WORSE THAN LINEAR");
    }
    return text;
}

std::string growthJson(const std::vector<GrowthSeries>& all,
                       const std::vector<std::string>& notes) {
    nlohmann::json list = nlohmann::json::array();
    for (const auto& series : all) {
        nlohmann::json points = nlohmann::json::array();
        for (const auto& [size, cost] : series.points)
            points.push_back({{"size", size}, {"milliseconds", cost}});
        list.push_back({{"name", series.name},
                        {"sizes", series.sizes},
                        {"points", points},
                        {"exponent", growthExponent(series.points)},
                        {"notWorseThanLinear", isLinear(series)}});
    }
    const nlohmann::json whole{{"benchmark", "scale"}, {"notes", notes}, {"results", list}};
    return whole.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

std::string growthPicture(const std::vector<GrowthSeries>& all) {
    constexpr std::array colors{"#2f5d50", "#a3261b", "#2a5caa", "#b8860b", "#6a3d9a",
                                "#1d8a99", "#d2691e", "#708090", "#c71585"};
    const double span = decades(all);
    std::string body = grid(span);
    for (std::size_t index = 0; index < all.size(); ++index) {
        const auto& series = all[index];
        const char* const color = colors[index % colors.size()];
        std::string line;
        for (const auto& [size, cost] : series.points) {
            const double x = std::log10(size / series.points.front().size) / span;
            const double y = std::log10(cost / series.points.front().cost) / span;
            line += formatted("%.1f,%.1f ", left + side * x, top + side - side * y);
        }
        body += "<polyline points=\"" + line +
                formatted("\" fill=\"none\" stroke=\"%s\" stroke-width=\"2\"/>\n", color);
        const double y = top + 16 + 20 * static_cast<double>(index);
        body += formatted("<rect x=\"%.1f\" y=\"%.1f\" width=\"14\" height=\"4\" fill=\"%s\"/>\n",
                          left + side + 20, y - 6, color);
        body += formatted("<text x=\"%.1f\" y=\"%.1f\">", left + side + 40, y) +
                xmlText(series.name) +
                formatted(", size^%.2f</text>\n", growthExponent(series.points));
    }
    return formatted("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %.0f %.0f\" "
                     "font-family=\"sans-serif\" font-size=\"12\">\n"
                     "<rect width=\"100%%\" height=\"100%%\" fill=\"#ffffff\"/>\n",
                     width, top + side + 40) +
           body + "</svg>\n";
}

} // namespace kelo::bench
