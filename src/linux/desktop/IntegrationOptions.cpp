#include "linux/desktop/IntegrationOptions.h"

#include "linux/integration/DesktopIntegration.h"

namespace kelo::desktop {

namespace {

command::Report reportOf(const integration::Outcome& outcome) {
    return {outcome.sentence + "\n", outcome.done};
}

} // namespace

command::ReportOption integrateOption() {
    return {"integrate",
            [] { return reportOf(integration::integrate(integration::Places::standard())); }};
}

command::ReportOption removeOption() {
    return {"remove",
            [] { return reportOf(integration::remove(integration::Places::standard())); }};
}

} // namespace kelo::desktop
