#include "base/ObservableObject.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace kelo::platform {
namespace {

struct Model : ObservableObject {
    Published<int> number{*this, 0};
};

TEST(Published, ObserversAreToldBeforeTheChange) {
    Model model;
    std::vector<int> seen;
    const auto observation = model.observe([&] { seen.push_back(model.number); });
    model.number = 5;
    model.number = 6;
    EXPECT_EQ(seen, (std::vector{0, 5}));
    EXPECT_EQ(model.number.get(), 6);
}

TEST(Published, EqualValueIsToldToo) {
    Model model;
    int told = 0;
    const auto observation = model.observe([&] { ++told; });
    model.number = 0;
    EXPECT_EQ(told, 1);
}

TEST(ObservableObject, LettingGoEndsTheObservation) {
    Model model;
    int told = 0;
    {
        const auto observation = model.observe([&] { ++told; });
    }
    model.number = 1;
    EXPECT_EQ(told, 0);
}

TEST(ObservableObject, ObservationMayOutliveTheObject) {
    auto model = std::make_unique<Model>();
    auto observation = model->observe([] {});
    model.reset();
    observation = Observation();
}

TEST(ObservableObject, ObserverMayEndItselfAndOthersWhileTold) {
    Model model;
    int told = 0;
    Observation first;
    Observation second;
    first = model.observe([&] {
        ++told;
        first = Observation();
        second = Observation();
    });
    second = model.observe([&] { told += 10; });
    model.number = 1;
    model.number = 2;
    EXPECT_EQ(told, 1);
}

} // namespace
} // namespace kelo::platform
