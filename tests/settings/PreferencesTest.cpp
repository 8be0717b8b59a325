#include "settings/Preferences.h"

#include "tests/fakes/FakeStore.h"

#include <gtest/gtest.h>

namespace clipwren {
namespace {

TEST(Preferences, AnEmptyStoreYieldsTheDefaults) {
    const FakeStore store;
    EXPECT_EQ(Preferences::fps(store), RecordingFPS::fps15);
    EXPECT_EQ(Preferences::resolution(store), RecordingResolution::width800);
    EXPECT_EQ(Preferences::maxDuration(store), MaxDuration::seconds30);
}

TEST(Preferences, EveryCaseReadsBackFromItsRawValue) {
    FakeStore store;
    for (const auto fps : allCases<RecordingFPS>) {
        store.setInteger(Preferences::fpsKey, rawValue(fps));
        EXPECT_EQ(Preferences::fps(store), fps);
    }
    for (const auto resolution : allCases<RecordingResolution>) {
        store.setInteger(Preferences::resolutionKey, rawValue(resolution));
        EXPECT_EQ(Preferences::resolution(store), resolution);
    }
    for (const auto duration : allCases<MaxDuration>) {
        store.setInteger(Preferences::maxDurationKey, rawValue(duration));
        EXPECT_EQ(Preferences::maxDuration(store), duration);
    }
}

TEST(Preferences, KeysAndRawValuesAreThoseThatAreStored) {
    EXPECT_EQ(Preferences::fpsKey, "recording.fps");
    EXPECT_EQ(Preferences::resolutionKey, "recording.resolution");
    EXPECT_EQ(Preferences::maxDurationKey, "recording.maxDuration");
    EXPECT_EQ(rawValue(RecordingFPS::fps24), 24);
    EXPECT_EQ(rawValue(RecordingResolution::width1600), 1600);
    EXPECT_EQ(rawValue(MaxDuration::noLimit), 0);
}

TEST(Preferences, UnknownNumbersReadAsTheDefaultAndStay) {
    FakeStore store;
    store.values = {{"recording.fps", 25}, {"recording.resolution", 1024}, {"recording.maxDuration", 45}};
    const auto before = store.values;
    EXPECT_EQ(Preferences::fps(store), RecordingFPS::fps15);
    EXPECT_EQ(Preferences::resolution(store), RecordingResolution::width800);
    EXPECT_EQ(Preferences::maxDuration(store), MaxDuration::seconds30);
    EXPECT_EQ(store.values, before);
    store.values["recording.fps"] = 0;
    EXPECT_EQ(Preferences::fps(store), RecordingFPS::fps15);
    store.values["recording.resolution"] = 0;
    EXPECT_EQ(Preferences::resolution(store), RecordingResolution::width800);
}

TEST(Preferences, ZeroSecondsMeansNoLimit) {
    FakeStore store;
    store.values["recording.maxDuration"] = 0;
    EXPECT_EQ(Preferences::maxDuration(store), MaxDuration::noLimit);
    store.values["recording.maxDuration"] = 60;
    EXPECT_EQ(Preferences::maxDuration(store), MaxDuration::seconds60);
}

TEST(Preferences, TextReadsAsZero) {
    FakeStore store;
    store.values = {
        {"recording.maxDuration", "soon"}, {"recording.fps", "fast"}, {"recording.resolution", "wide"}};
    EXPECT_EQ(Preferences::maxDuration(store), MaxDuration::noLimit);
    EXPECT_EQ(Preferences::fps(store), RecordingFPS::fps15);
    EXPECT_EQ(Preferences::resolution(store), RecordingResolution::width800);
}

TEST(Preferences, AfterARemovalAllReadAsTheirDefaults) {
    FakeStore store;
    store.values = {{"recording.fps", 30}, {"recording.resolution", 480}, {"recording.maxDuration", 0}};
    store.removeAll();
    EXPECT_EQ(Preferences::fps(store), RecordingFPS::fps15);
    EXPECT_EQ(Preferences::resolution(store), RecordingResolution::width800);
    EXPECT_EQ(Preferences::maxDuration(store), MaxDuration::seconds30);
}

template <typename Setting>
std::vector<std::string> labels() {
    std::vector<std::string> result;
    for (const auto setting : allCases<Setting>)
        result.push_back(label(setting));
    return result;
}

TEST(Preferences, LabelsStandInTheOrderOfTheCases) {
    EXPECT_EQ(labels<RecordingFPS>(),
              (std::vector<std::string>{"10 fps", "15 fps", "20 fps", "24 fps", "30 fps"}));
    EXPECT_EQ(labels<RecordingResolution>(),
              (std::vector<std::string>{"480 px wide", "600 px wide", "800 px wide", "1200 px wide",
                                        "1600 px wide"}));
    EXPECT_EQ(labels<MaxDuration>(),
              (std::vector<std::string>{"15 seconds", "30 seconds", "60 seconds", "No limit"}));
}

} // namespace
} // namespace clipwren
