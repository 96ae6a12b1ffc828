#include "common/Results.h"

#include "common/BarChart.h"
#include "common/Distribution.h"
#include "common/Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace kelo::bench {

namespace {

nlohmann::json summary(const Distribution& values) {
    return {{"lowest", values.lowest},
            {"median", values.median},
            {"percentile95", values.percentile95},
            {"highest", values.highest}};
}

} // namespace

Results::Results(std::string name, std::string reference)
    : name(std::move(name)), reference(std::move(reference)) {}

void Results::add(const std::string& quantity, const std::string& unit, const std::string& subject,
                  double value) {
    const auto known = std::ranges::find_if(all, [&](const Series& each) {
        return each.quantity == quantity && each.subject == subject;
    });
    if (known != all.end())
        known->values.push_back(value);
    else
        all.push_back({quantity, unit, subject, {value}});
}

void Results::add(const std::string& quantity, const std::string& unit, const std::string& subject,
                  const std::vector<double>& values) {
    for (const double value : values)
        add(quantity, unit, subject, value);
}

void Results::drop(const std::string& subject) {
    std::erase_if(all, [&](const Series& each) { return each.subject == subject; });
}

void Results::note(std::string line) {
    notes.push_back(std::move(line));
}

std::vector<std::string> Results::quantities() const {
    std::vector<std::string> names;
    for (const auto& each : all)
        if (std::ranges::find(names, each.quantity) == names.end())
            names.push_back(each.quantity);
    return names;
}

const Series* Results::find(const std::string& quantity, const std::string& subject) const {
    for (const auto& each : all)
        if (each.quantity == quantity && each.subject == subject)
            return &each;
    return nullptr;
}

std::string Results::table() const {
    std::size_t longest = 40;
    for (const auto& each : all)
        longest = std::max({longest, each.quantity.size() + each.unit.size(), each.subject.size()});
    const int width = static_cast<int>(longest) + 4;
    std::string text;
    for (const auto& quantity : quantities()) {
        const Series* const compared = find(quantity, reference);
        bool first = true;
        for (const auto& each : all) {
            if (each.quantity != quantity)
                continue;
            if (std::exchange(first, false))
                text +=
                    formatted("\n%-*s %9s %9s %9s %9s%s\n", width,
                              (quantity + ", " + each.unit).c_str(), "median", "lowest", "highest",
                              "p95", compared ? ("   times " + reference).c_str() : "");
            const auto values = distributionOf(each.values);
            text += formatted("  %-*s %9.2f %9.2f %9.2f %9.2f", width - 2, each.subject.c_str(),
                              values.median, values.lowest, values.highest, values.percentile95);
            const auto ratio = compared ? ratioOf(each.values, compared->values) : std::nullopt;
            if (ratio && &each != compared)
                text += formatted("   %.2f (%.2f to %.2f)", ratio->median, ratio->lowest,
                                  ratio->highest);
            text += "\n";
        }
    }
    for (const auto& line : notes)
        text += "\n" + line;
    return text + (notes.empty() ? "" : "\n");
}

std::string Results::json() const {
    nlohmann::json list = nlohmann::json::array();
    for (const auto& each : all) {
        nlohmann::json entry = summary(distributionOf(each.values));
        entry["quantity"] = each.quantity;
        entry["unit"] = each.unit;
        entry["subject"] = each.subject;
        entry["values"] = each.values;
        const Series* const compared = find(each.quantity, reference);
        const auto ratio = compared ? ratioOf(each.values, compared->values) : std::nullopt;
        if (ratio && &each != compared)
            entry["ratio"] = summary(*ratio);
        list.push_back(std::move(entry));
    }
    const nlohmann::json whole{
        {"benchmark", name}, {"reference", reference}, {"notes", notes}, {"results", list}};
    return whole.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

std::string Results::picture() const {
    BarChart chart;
    for (const auto& quantity : quantities()) {
        std::vector<BarChart::Bar> bars;
        std::string unit;
        for (const auto& each : all) {
            if (each.quantity != quantity)
                continue;
            const auto values = distributionOf(each.values);
            bars.push_back({each.subject, values.median, values.lowest, values.highest,
                            each.subject == reference});
            unit = each.unit;
        }
        chart.add(quantity + ", " + unit, std::move(bars));
    }
    return chart.svg();
}

void Results::publish(const std::filesystem::path& folder) const {
    std::fputs(table().c_str(), stdout);
    writeText(folder / (name + ".json"), json());
    writeText(folder / (name + ".svg"), picture());
    std::printf("\nWritten: %s and .svg\n", (folder / (name + ".json")).c_str());
    std::fflush(stdout);
}

std::filesystem::path resultFolder(const std::filesystem::path& build) {
    return build.lexically_normal().parent_path() / "bench";
}

void writeText(const std::filesystem::path& file, const std::string& text) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream << text;
    stream.close();
    if (!stream)
        throw std::runtime_error(file.string() + " could not be written.");
}

} // namespace kelo::bench
