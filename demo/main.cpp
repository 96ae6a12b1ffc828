#include "demo/Authority.h"
#include "demo/Options.h"
#include "demo/ServiceError.h"

#include <sys/stat.h>

#include <cstddef>
#include <iostream>

namespace kelo::demo {
namespace {

int run(const Options& options) {
    switch (options.action) {
    case Options::Action::help:
        std::cout << helpText();
        return 0;
    case Options::Action::makeAuthority:
        prepareAuthority(AuthorityFiles(options.authority));
        return 0;
    case Options::Action::serve:
        prepareServerCertificate(AuthorityFiles(options.authority));
        return 0;
    }
    return 1;
}

} // namespace
} // namespace kelo::demo

int main(int count, char** arguments) {
    using namespace kelo::demo;
    ::umask(077);
    try {
        const auto given = static_cast<std::size_t>(count > 0 ? count - 1 : 0);
        return run(parseOptions({arguments + 1, given}));
    } catch (const UsageError& error) {
        std::cerr << "kelo-demo-service: " << error.what() << "\n\n" << helpText();
        return 2;
    } catch (const ServiceError& error) {
        std::cerr << "kelo-demo-service: " << error.what() << "\n";
        return 1;
    }
}
