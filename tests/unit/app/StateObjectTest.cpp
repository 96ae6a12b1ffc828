#include "app/StateObject.h"

#include "app/KeloApp.h"
#include "fakes/ScopedTestDesktop.h"

#include <gtest/gtest.h>

namespace kelo {
namespace {

struct Counted {
    static inline int made = 0;
    Counted() { ++made; }
};

struct StateObjectTest : testing::Test {
    StateObjectTest() { Counted::made = 0; }
    app::StateObject<Counted> object{[] { return std::make_shared<Counted>(); }};
};

TEST_F(StateObjectTest, IsMadeWhenItIsFirstRead) {
    EXPECT_EQ(Counted::made, 0);
    EXPECT_NE(object.get(), nullptr);
    EXPECT_EQ(Counted::made, 1);
}

TEST_F(StateObjectTest, IsMadeOnceAndStaysTheSame) {
    const auto first = object.get();
    EXPECT_EQ(object.get(), first);
    EXPECT_EQ(Counted::made, 1);
}

TEST_F(StateObjectTest, CopiesStandForTheSameObjectAlsoWhenTakenBefore) {
    const auto copy = object;
    EXPECT_EQ(Counted::made, 0);
    EXPECT_EQ(copy.get(), object.get());
    EXPECT_EQ(Counted::made, 1);
}

TEST_F(StateObjectTest, FactoryGoesWhenItHasDoneItsWork) {
    const auto used = std::make_shared<int>();
    const app::StateObject<Counted> other([used] { return std::make_shared<Counted>(); });
    EXPECT_EQ(used.use_count(), 2);
    other.get();
    EXPECT_EQ(used.use_count(), 1);
}

// Making the registrar or the voice controller leaves no trace on the desktop, so these tests look
// into the program: the explicit instantiation of a template may name a private member.
template <typename Name, auto member>
struct Opened {
    friend constexpr auto memberOf(Name) { return member; }
};

struct Registrar {
    friend constexpr auto memberOf(Registrar);
};
struct RegistrarState {
    friend constexpr auto memberOf(RegistrarState);
};
struct Voice {
    friend constexpr auto memberOf(Voice);
};
struct VoiceState {
    friend constexpr auto memberOf(VoiceState);
};
template struct Opened<Registrar, &app::KeloApp::registrar>;
template struct Opened<RegistrarState, &app::StateObject<passkey::PasskeyRegistrar>::state>;
template struct Opened<Voice, &app::KeloApp::voice>;
template struct Opened<VoiceState, &app::StateObject<voice::VoiceController>::state>;

struct KeloAppObjects : testing::Test {
    fakes::ScopedTestDesktop desktop;
    app::KeloApp app;

    bool registrarIsMade() const {
        return ((app.*memberOf(Registrar{})).*memberOf(RegistrarState{}))->object != nullptr;
    }
    bool voiceIsMade() const {
        return ((app.*memberOf(Voice{})).*memberOf(VoiceState{}))->object != nullptr;
    }
};

TEST_F(KeloAppObjects, ConstructionScenesAndActionsMakeNeitherRegistrarNorVoiceController) {
    EXPECT_FALSE(registrarIsMade() || voiceIsMade()) << "by the construction";
    app.body();
    EXPECT_FALSE(registrarIsMade() || voiceIsMade()) << "by the scenes";
    app.actions();
    EXPECT_FALSE(registrarIsMade() || voiceIsMade()) << "by the actions";
}

TEST_F(KeloAppObjects, ContentOfTheMainWindowNeedsNeitherRegistrarNorVoiceController) {
    const auto scenes = app.body();
    const auto& group = std::get<platform::WindowGroup>(scenes.at(0));
    group.content.body();
    group.content.observed();
    EXPECT_FALSE(registrarIsMade());
    EXPECT_FALSE(voiceIsMade());
}

TEST_F(KeloAppObjects, AccountMenuMakesTheRegistrarAndNoVoiceController) {
    const auto scenes = app.body();
    std::get<platform::WindowGroup>(scenes.at(0)).commands.at(0).items.body();
    EXPECT_TRUE(registrarIsMade());
    EXPECT_FALSE(voiceIsMade());
}

TEST_F(KeloAppObjects, AppearanceOfTheMainWindowMakesTheVoiceControllerAndNoRegistrar) {
    const auto scenes = app.body();
    std::get<platform::WindowGroup>(scenes.at(0)).onAppear();
    EXPECT_TRUE(voiceIsMade());
    EXPECT_FALSE(registrarIsMade());
}

} // namespace
} // namespace kelo
