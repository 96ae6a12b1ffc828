#include "publisher/Commands.h"
#include "publisher/Failure.h"

#include <cstdlib>
#include <exception>
#include <iostream>
#include <span>

/// Exit status: 0 for success, 1 for a failure, 2 for an invalid command line.
int main(int count, char** words) {
    using namespace kelo::publisher;
    try {
        const char* const variable = std::getenv("KELO_APPCAST_KEY");
        const std::span<const char* const> all(words, static_cast<std::size_t>(count));
        run(parseArguments(all.subspan(all.empty() ? 0 : 1),
                           variable ? std::optional<std::string>(variable) : std::nullopt),
            std::cout, std::cerr);
        return std::cout.flush() ? 0 : 1;
    } catch (const UsageError& error) {
        std::cerr << "kelo-appcast: " << error.what() << "\nTry kelo-appcast --help.\n";
        return 2;
    } catch (const std::exception& error) {
        std::cerr << "kelo-appcast: " << error.what() << "\n";
        return 1;
    }
}
