#include "linux/desktop/IntegrationOptions.h"

#include "base/Translation.h"
#include "linux/integration/DesktopIntegration.h"

namespace kelo::desktop {

namespace {

gtk::Report reportOf(const integration::Outcome& outcome) {
    return {outcome.sentence + "\n", outcome.done};
}

} // namespace

gtk::ReportOption integrateOption() {
    return {"integrate", translated("Put this unpacked copy into your menu, then exit"),
            [] { return reportOf(integration::integrate(integration::Places::standard())); }};
}

gtk::ReportOption removeOption() {
    return {"remove", translated("Take it out of your menu again, then exit"),
            [] { return reportOf(integration::remove(integration::Places::standard())); }};
}

} // namespace kelo::desktop
