#pragma once

#include <string>
#include <vector>

namespace kelo::bench {

/// Groups of horizontal bars as SVG; each group has a scale of its own that begins at 0.
class BarChart {
public:
    struct Bar {
        std::string name;
        double value = 0;
        /// The ends of a line across the bar's end.
        double lowest = 0;
        double highest = 0;
        bool isEmphasized = false;
    };

    void add(std::string title, std::vector<Bar> bars);
    std::string svg() const;

private:
    struct Group {
        std::string title;
        std::vector<Bar> bars;
    };
    std::vector<Group> groups;
};

} // namespace kelo::bench
