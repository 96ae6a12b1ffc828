#include "EventBytes.h"

#include "linux/input/evdev/EvdevReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace kelo {

using input::EvdevReader;
using input::HeldKeys;
using input::KeyReport;
using testing::ElementsAre;
using testing::IsEmpty;

namespace input {

void PrintTo(const KeyReport& report, std::ostream* out) {
    const HeldKeys& held = report.held;
    *out << (held.leftControl ? "[left control]" : "")
         << (held.rightControl ? "[right control]" : "") << (held.leftAlt ? "[left alt]" : "")
         << (report.otherPress ? "[another]" : "");
}

} // namespace input

namespace {

constexpr KeyReport none{};
constexpr KeyReport leftControl{{.leftControl = true}};
constexpr KeyReport rightControl{{.rightControl = true}};
constexpr KeyReport leftAlt{{.leftAlt = true}};
constexpr KeyReport chord{{.leftControl = true, .leftAlt = true}};
/// The report of another key that goes down after this one.
constexpr KeyReport another(const KeyReport& before = none) {
    return {before.held, true};
}

/// A reader whose device can be asked which keys are down.
struct Reading {
    std::optional<HeldKeys> device = HeldKeys{};
    int questions = 0;
    EvdevReader reader;

    explicit Reading(HeldKeys initially = {})
        : reader(initially, [this] {
              ++questions;
              return device;
          }) {}
};

const EventBytes tap = down(KEY_LEFTCTRL) + report() + down(KEY_LEFTALT) + report() +
                       up(KEY_LEFTALT) + report() + up(KEY_LEFTCTRL) + report();

TEST(EvdevReader, TellsEachReportThatChangedSomething) {
    Reading reading;
    EXPECT_THAT(reading.reader.take(tap), ElementsAre(leftControl, chord, leftControl, none));
    EXPECT_EQ(reading.questions, 0);
}

TEST(EvdevReader, TellsNothingBeforeTheReportEnds) {
    Reading reading;
    EXPECT_THAT(reading.reader.take(down(KEY_LEFTCTRL) + down(KEY_LEFTALT)), IsEmpty());
    EXPECT_THAT(reading.reader.take(report()), ElementsAre(chord));
}

TEST(EvdevReader, PutsTogetherRecordsSplitAtAnyByte) {
    for (std::size_t split = 0; split <= tap.size(); ++split) {
        Reading reading;
        auto states = reading.reader.take(std::span(tap).first(split));
        for (const KeyReport& state : reading.reader.take(std::span(tap).subspan(split)))
            states.push_back(state);
        EXPECT_THAT(states, ElementsAre(leftControl, chord, leftControl, none)) << split;
    }
}

TEST(EvdevReader, PutsTogetherRecordsThatComeByteByByte) {
    Reading reading;
    std::vector<KeyReport> states;
    for (const std::byte& each : tap)
        for (const KeyReport& state : reading.reader.take(std::span(&each, 1)))
            states.push_back(state);
    EXPECT_THAT(states, ElementsAre(leftControl, chord, leftControl, none));
}

TEST(EvdevReader, IgnoresRepetitions) {
    Reading reading;
    EXPECT_THAT(reading.reader.take(repeated(KEY_LEFTCTRL) + report()), IsEmpty());
    EXPECT_THAT(reading.reader.take(down(KEY_LEFTCTRL) + report() + repeated(KEY_LEFTCTRL) +
                                    report() + repeated(KEY_LEFTCTRL) + report()),
                ElementsAre(leftControl));
}

TEST(EvdevReader, LeavesOutAReportThatChangesNothing) {
    Reading reading(leftControl.held);
    EXPECT_THAT(
        reading.reader.take(down(KEY_LEFTCTRL) + report() + report() + up(KEY_LEFTALT) + report()),
        IsEmpty());
}

TEST(EvdevReader, IgnoresOtherModifiersAndOtherEvents) {
    Reading reading;
    EXPECT_THAT(reading.reader.take(record(EV_MSC, MSC_SCAN, 29) + report() + down(KEY_RIGHTALT) +
                                    report() + record(EV_REL, KEY_LEFTCTRL, 1) + report() +
                                    record(EV_LED, KEY_LEFTALT, 1) + report()),
                IsEmpty());
}

TEST(EvdevReader, TellsThatAnotherKeyWentDownButNeitherItsReleaseNorItsRepetition) {
    Reading reading;
    EXPECT_THAT(reading.reader.take(down(KEY_T) + report() + repeated(KEY_T) + report() +
                                    up(KEY_T) + report() + repeated(KEY_T) + report()),
                ElementsAre(another()));
}

TEST(EvdevReader, TellsAWholeShortcutInOneReportAsOneReport) {
    Reading reading;
    EXPECT_THAT(reading.reader.take(down(KEY_LEFTCTRL) + down(KEY_LEFTALT) + down(KEY_T) +
                                    report() + up(KEY_LEFTALT) + report()),
                ElementsAre(another(chord), leftControl));
}

TEST(EvdevReader, TellsTheKeysOfShortcutsApartFromModifiersAndButtons) {
    for (const int code : {KEY_T, KEY_F12, KEY_LEFT, KEY_DELETE, KEY_KP0, KEY_VOLUMEUP, KEY_OK,
                           KEY_MICMUTE, KEY_MACRO1})
        EXPECT_THAT(Reading().reader.take(down(code) + report()), ElementsAre(another())) << code;
    for (const int code : {KEY_RESERVED, KEY_LEFTSHIFT, KEY_RIGHTSHIFT, KEY_RIGHTALT, KEY_LEFTMETA,
                           KEY_RIGHTMETA, KEY_CAPSLOCK, KEY_NUMLOCK, KEY_FN, BTN_LEFT, BTN_TOUCH,
                           BTN_GEAR_UP, BTN_DPAD_LEFT, BTN_TRIGGER_HAPPY1})
        EXPECT_THAT(Reading().reader.take(down(code) + report()), IsEmpty()) << code;
}

TEST(EvdevReader, ForgetsAnotherPressOfAReportInWhichEventsWereLost) {
    Reading reading;
    EXPECT_THAT(reading.reader.take(down(KEY_T) + dropped() + down(KEY_U) + report()), IsEmpty());
}

TEST(EvdevReader, GoesOnFromTheStateThatItIsGiven) {
    Reading reading;
    EXPECT_THAT(reading.reader.take(down(KEY_T) + down(KEY_RIGHTCTRL)), IsEmpty());
    reading.reader.restart(chord.held);
    EXPECT_THAT(reading.reader.take(report()), IsEmpty());
    EXPECT_THAT(reading.reader.take(up(KEY_LEFTCTRL) + report()), ElementsAre(leftAlt));
}

TEST(EvdevReader, IgnoresValuesThatMeanNothing) {
    Reading reading;
    EXPECT_THAT(reading.reader.take(record(EV_KEY, KEY_LEFTCTRL, -1) + report() +
                                    record(EV_KEY, KEY_LEFTCTRL, 3) + report() +
                                    record(EV_KEY, 0xFFFF, 1) + report() +
                                    record(0xFFFF, KEY_LEFTCTRL, 1) + report()),
                IsEmpty());
}

TEST(EvdevReader, TellsLeftAndRightControlApart) {
    Reading reading;
    constexpr KeyReport both{{.leftControl = true, .rightControl = true}};
    EXPECT_THAT(reading.reader.take(down(KEY_LEFTCTRL) + report() + down(KEY_RIGHTCTRL) + report() +
                                    up(KEY_LEFTCTRL) + report()),
                ElementsAre(leftControl, both, rightControl));
}

TEST(EvdevReader, BeginsWithTheKeysThatAreDownAlready) {
    Reading reading(leftControl.held);
    EXPECT_THAT(reading.reader.take(down(KEY_LEFTALT) + report()), ElementsAre(chord));
}

TEST(EvdevReader, AsksTheDeviceWhenEventsWereLost) {
    Reading reading;
    reading.device = leftAlt.held;
    EXPECT_THAT(reading.reader.take(down(KEY_LEFTCTRL) + report() + dropped()),
                ElementsAre(leftControl));
    EXPECT_THAT(reading.reader.take(down(KEY_RIGHTCTRL)), IsEmpty());
    EXPECT_EQ(reading.questions, 0) << "not before the broken report ends";
    EXPECT_THAT(reading.reader.take(report()), ElementsAre(leftAlt));
    EXPECT_EQ(reading.questions, 1);
    EXPECT_THAT(reading.reader.take(down(KEY_LEFTCTRL) + report()), ElementsAre(chord))
        << "and goes on as usual";
    EXPECT_EQ(reading.questions, 1);
}

TEST(EvdevReader, ForgetsTheReportInWhichEventsWereLost) {
    Reading reading;
    EXPECT_THAT(reading.reader.take(down(KEY_LEFTCTRL) + dropped() + report()), IsEmpty());
}

TEST(EvdevReader, TakesWhatCameWithTheSameReadForOlderThanTheAnswer) {
    Reading reading;
    EXPECT_THAT(reading.reader.take(dropped() + report() + down(KEY_LEFTCTRL) + report()),
                IsEmpty());
    EXPECT_THAT(reading.reader.take(down(KEY_LEFTALT) + report()), ElementsAre(leftAlt));
}

TEST(EvdevReader, KeepsTheRhythmOfRecordsOverAnAnswer) {
    Reading reading;
    const EventBytes next = down(KEY_LEFTALT) + report();
    EXPECT_THAT(
        reading.reader.take(dropped() + report() + EventBytes(next.begin(), next.begin() + 7)),
        IsEmpty());
    EXPECT_THAT(reading.reader.take(std::span(next).subspan(7)), ElementsAre(leftAlt));
}

TEST(EvdevReader, TakesAllKeysForReleasedWhenTheDeviceDoesNotAnswer) {
    Reading reading(chord.held);
    reading.device = std::nullopt;
    EXPECT_THAT(reading.reader.take(dropped() + report()), ElementsAre(none));
}

TEST(EvdevReader, KnowsTheKeysAgainAfterAnyBytes) {
    std::mt19937 random(1);
    Reading reading;
    std::size_t total = 0;
    for (int round = 0; round < 2000; ++round) {
        EventBytes bytes(random() % 200);
        total += bytes.size();
        for (std::byte& each : bytes)
            each = static_cast<std::byte>(random());
        reading.reader.take(bytes);
    }
    const std::size_t begun = total % sizeof(input_event);
    reading.reader.take(EventBytes(sizeof(input_event) - begun));

    reading.device = chord.held;
    reading.reader.take(dropped() + report());
    EXPECT_THAT(reading.reader.take(up(KEY_LEFTALT) + report()), ElementsAre(leftControl));
}

} // namespace

} // namespace kelo
