#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kelo::bench {

/// One quantity of one subject (a program, or a state of one), measured again and again.
struct Series {
    std::string quantity;
    std::string unit;
    std::string subject;
    std::vector<double> values; ///< one a round
};

/// What a benchmark has measured. Quantities and subjects keep the order in which they were first
/// added.
class Results {
public:
    /// name: of the files, "start". reference: the subject that the others are compared with, by
    /// the quotient of each round; empty to compare nothing.
    explicit Results(std::string name, std::string reference = "");

    void add(const std::string& quantity, const std::string& unit, const std::string& subject,
             double value);
    void add(const std::string& quantity, const std::string& unit, const std::string& subject,
             const std::vector<double>& values);
    /// Forgets the subject: its rounds are incomplete.
    void drop(const std::string& subject);
    /// What a reader has to know, such as how the web page was reached and what was left out.
    void note(std::string line);

    const std::vector<Series>& series() const { return all; }
    std::vector<std::string> quantities() const;
    /// Null if it was not measured.
    const Series* find(const std::string& quantity, const std::string& subject) const;

    /// A block for each quantity and a line for each subject: median, lowest, highest, 95th
    /// percentile, and how many times the reference's it is, as median and range of the rounds.
    std::string table() const;
    std::string json() const;
    /// A bar for each line of the table, from 0 to the median, and a line over the range.
    std::string picture() const;

    /// Prints table and notes, and writes NAME.json and NAME.svg into the folder, which is made.
    /// Throws std::runtime_error if they cannot be written.
    void publish(const std::filesystem::path& folder) const;

private:
    std::string name;
    std::string reference;
    std::vector<Series> all;
    std::vector<std::string> notes;
};

/// build/bench, beside the folder of the preset.
std::filesystem::path resultFolder(const std::filesystem::path& build);

/// Throws std::runtime_error if it cannot be written; makes its folder.
void writeText(const std::filesystem::path& file, const std::string& text);

} // namespace kelo::bench
